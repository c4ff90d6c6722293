#include "input/later_lines.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

/// One conversion of a format, from its "%" to its last letter.
struct Conversion {
    std::string_view text;
    bool isLong = false;  ///< of the machine's long, or a size, which is as wide
    char type = '\0';     ///< '%' for a percent sign
};

/// A flag, a width or a precision. (strspn would fill a table for each conversion.)
bool standsBeforeType(char letter) { return letter >= ' ' && letter <= '9' && letter != '%'; }

Conversion conversionAt(const char* percent) {
    const char* at = percent + 1;
    while (standsBeforeType(*at)) {
        ++at;
    }
    const bool isLong = *at == 'l' || *at == 'z';
    at += isLong ? 1 : 0;
    return {{percent, static_cast<std::size_t>(at - percent) + 1}, isLong, *at};
}

static_assert(sizeof(std::size_t) == sizeof(long), "a size is kept as a long");

/// Appends to a line of which `size` characters stand.
class Line {
 public:
    void text(std::string_view piece) {
        const std::size_t length = std::min(piece.size(), text_.size() - size_);
        std::memcpy(text_.data() + size_, piece.data(), length);
        size_ += length;
    }
    /// A number without flags and width.
    void number(std::int64_t value, int base) {
        const auto end =
            std::to_chars(text_.data() + size_, text_.data() + text_.size() - 1, value, base);
        size_ = static_cast<std::size_t>(end.ptr - text_.data());
    }
    template <class Value>
    void value(const Conversion& conversion, Value value) {
        std::array<char, 16> format{};
        conversion.text.copy(format.data(), format.size() - 1);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"  // the line's own, checked where it stands
        const int length =
            std::snprintf(text_.data() + size_, text_.size() - size_, format.data(), value);
#pragma GCC diagnostic pop
        size_ = std::min(size_ + static_cast<std::size_t>(std::max(length, 0)), text_.size() - 1);
    }
    void print() const { std::fwrite(text_.data(), 1, size_, stdout); }

 private:
    std::array<char, 1024> text_;
    std::size_t size_ = 0;
};

template <class Value>
Value take(const char*& at) {
    Value value{};
    std::memcpy(&value, at, sizeof value);
    at += sizeof value;
    return value;
}

/// Appends a kept value; `at` goes on behind it.
void appendKept(Line& line, const Conversion& conversion, const char*& at) {
    const bool plain = conversion.text.size() == 2;
    if (conversion.type == 's') {
        const std::string_view text(at);
        plain ? line.text(text) : line.value(conversion, at);
        at += text.size() + 1;
    } else if (conversion.isLong) {
        line.value(conversion, take<long>(at));
    } else if (plain && conversion.type == 'd') {
        line.number(take<int>(at), 10);
    } else if (plain && conversion.type == 'x') {
        line.number(take<unsigned>(at), 16);
    } else {
        line.value(conversion, take<int>(at));
    }
}

}  // namespace

void LaterLines::put(const void* bytes, std::size_t size) {
    std::memcpy(kept_.data() + size_, bytes, size);
    size_ += size;
}

void LaterLines::add(const char* format, va_list arguments) {
    if (size_ + kMostForOne > kRoom) {
        print();
    }
    put(&format, sizeof format);
    for (const char* at = std::strchr(format, '%'); at != nullptr; at = std::strchr(at, '%')) {
        const Conversion conversion = conversionAt(at);
        at += conversion.text.size();
        if (conversion.type == 's') {
            const char* const text = va_arg(arguments, const char*);
            put(text, strnlen(text, kLongestText));
            put("", 1);
        } else if (conversion.isLong) {
            const long value = va_arg(arguments, long);
            put(&value, sizeof value);
        } else if (conversion.type != '%') {
            const int value = va_arg(arguments, int);
            put(&value, sizeof value);
        }
    }
}

void LaterLines::print() {
    const char* at = kept_.data();
    const char* const end = at + size_;
    while (at < end) {
        Line line;
        const char* format = take<const char*>(at);
        for (const char* percent = nullptr; (percent = std::strchr(format, '%')) != nullptr;) {
            line.text({format, static_cast<std::size_t>(percent - format)});
            const Conversion conversion = conversionAt(percent);
            format = percent + conversion.text.size();
            if (conversion.type == '%') {
                line.text("%");
            } else {
                appendKept(line, conversion, at);
            }
        }
        line.text(format);
        line.print();
    }
    size_ = 0;
}
