#include "drawing/wall_drawing.h"

#include <algorithm>
#include <set>

namespace drawing {
namespace {

constexpr std::size_t kMostCharacters = std::size_t{4} << 20;
constexpr std::size_t kCellHeight = 3;  ///< two lines of text and the border between cells
constexpr std::size_t kBeside = 3;      ///< between screens; as much again for a hole
constexpr std::size_t kBelow = 1;

class Canvas {
 public:
    Canvas() = default;
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    virtual ~Canvas() = default;
    virtual void frame(const Area& area, bool isMarked) = 0;
    virtual void text(std::size_t x, std::size_t y, const std::string& text, bool isMarked) = 0;
};

/// Where every column (or row) that is used begins, and where the last one ends.
class Places {
 public:
    void widen(unsigned index, std::size_t size) {
        auto& most = sizes_[index];
        most = std::max(most, size);
    }
    void layOut(std::size_t between) {
        std::optional<unsigned> before;
        for (const auto& [index, size] : sizes_) {
            end_ += before ? between + (index > *before + 1 ? between : 0) : 0;
            starts_[index] = end_;
            end_ += size;
            before = index;
        }
    }
    std::size_t at(unsigned index) const { return starts_.at(index); }
    std::size_t end() const { return end_; }

 private:
    std::map<unsigned, std::size_t> sizes_, starts_;
    std::size_t end_ = 0;
};

/// The used columns or rows of a screen's cells, counted without holes.
struct Grid {
    explicit Grid(const Screen& screen) {
        for (const auto& [position, cell] : screen.cells) {
            columns.insert(position.first);
            rows.insert(position.second);
        }
    }
    std::set<unsigned> columns, rows;
};

std::size_t indexOf(const std::set<unsigned>& used, unsigned index) {
    return static_cast<std::size_t>(std::distance(used.begin(), used.find(index)));
}

std::string portText(const Cell& cell) {
    return cell.port == 0 ? "" : "port 80+" + std::to_string(cell.port);
}

std::string titleOf(const Position& position, const Screen& screen) {
    return std::to_string(position.first) + ',' + std::to_string(position.second) + ' ' +
           screen.name + (screen.isHere ? " (this console)" : "");
}

class Drawing {
 public:
    explicit Drawing(const Wall& wall) : wall_(wall) {
        for (const auto& [position, screen] : wall) {
            for (const auto& [at, cell] : screen.cells) {
                cellWidth_ =
                    std::max({cellWidth_, cell.address.size() + 3, portText(cell).size() + 3});
            }
        }
        for (const auto& [position, screen] : wall) {
            const Area size = sizeOf(screen);
            columns_.widen(position.first, std::max(size.width, titleOf(position, screen).size()));
            rows_.widen(position.second, size.height + 1);
        }
        columns_.layOut(kBeside);
        rows_.layOut(kBelow);
    }

    Area size() const { return {0, 0, columns_.end(), rows_.end()}; }

    void draw(Canvas& canvas) const {
        for (const auto& [position, screen] : wall_) {
            const std::size_t x = columns_.at(position.first), y = rows_.at(position.second);
            canvas.text(x, y, titleOf(position, screen), screen.isHere);
            Area whole = sizeOf(screen);
            whole.x = x;
            whole.y = y + 1;
            const Grid grid(screen);
            for (const auto& [at, cell] : screen.cells) {
                const Area area{x + indexOf(grid.columns, at.first) * cellWidth_,
                                y + 1 + indexOf(grid.rows, at.second) * kCellHeight, cellWidth_ + 1,
                                kCellHeight + 1};
                canvas.frame(area, false);
                canvas.text(area.x + 2, area.y + 1, cell.address, false);
                canvas.text(area.x + 2, area.y + 2, portText(cell), false);
            }
            canvas.frame(whole, screen.isHere);
        }
    }

 private:
    Area sizeOf(const Screen& screen) const {
        const Grid grid(screen);
        return {0, 0, std::max<std::size_t>(grid.columns.size(), 1) * cellWidth_ + 1,
                std::max<std::size_t>(grid.rows.size(), 1) * kCellHeight + 1};
    }

    const Wall& wall_;
    std::size_t cellWidth_ = 10;
    Places columns_, rows_;
};

class TextCanvas : public Canvas {
 public:
    void frame(const Area& area, bool isMarked) override {
        const char side = isMarked ? '#' : '|', edge = isMarked ? '#' : '-';
        const std::size_t right = area.x + area.width - 1, bottom = area.y + area.height - 1;
        for (std::size_t x = area.x + 1; x < right; ++x) {
            put(x, area.y, edge);
            put(x, bottom, edge);
        }
        for (std::size_t y = area.y + 1; y < bottom; ++y) {
            put(area.x, y, side);
            put(right, y, side);
        }
        for (const std::size_t y : {area.y, bottom}) {
            put(area.x, y, isMarked ? '#' : '+');
            put(right, y, isMarked ? '#' : '+');
        }
    }
    void text(std::size_t x, std::size_t y, const std::string& text, bool /*isMarked*/) override {
        for (const char letter : text) {
            put(x++, y, letter);
        }
    }
    std::string whole(const Area& /*size*/) const {
        std::string all;
        for (const std::string& line : lines_) {
            all += line + '\n';
        }
        return all;
    }

 private:
    /// Borders that meet become corners.
    void put(std::size_t x, std::size_t y, char letter) {
        lines_.resize(std::max(lines_.size(), y + 1));
        std::string& line = lines_[y];
        line.resize(std::max(line.size(), x + 1), ' ');
        const bool isCorner = line[x] == '+' && (letter == '-' || letter == '|');
        line[x] = isCorner ? '+' : letter;
    }

    std::vector<std::string> lines_;
};

class SvgCanvas : public Canvas {
 public:
    void frame(const Area& area, bool isMarked) override {
        body_ += "<rect x=\"" + pixels(area.x, kWide) + "\" y=\"" + pixels(area.y, kHigh) +
                 "\" width=\"" + pixels(area.width - 1, kWide) + "\" height=\"" +
                 pixels(area.height - 1, kHigh) + "\"" + (isMarked ? " class=\"here\"" : "") +
                 "/>\n";
    }
    void text(std::size_t x, std::size_t y, const std::string& text, bool isMarked) override {
        if (text.empty()) {
            return;
        }
        body_ += "<text x=\"" + pixels(x, kWide) + "\" y=\"" +
                 std::to_string(y * kHigh + kHigh * 3 / 4) + "\"" +
                 (isMarked ? " class=\"here\"" : "") + ">" + escaped(text) + "</text>\n";
    }
    std::string whole(const Area& size) const {
        const std::string width = pixels(size.width + 2, kWide);
        const std::string height = pixels(size.height + 1, kHigh);
        return "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"-8 -8 " + width + ' ' + height +
               "\" width=\"" + width + "\" height=\"" + height +
               "\" font-family=\"monospace\" font-size=\"13\">\n"
               "<style>rect{fill:none;stroke:#444}rect.here{stroke:#06c;stroke-width:3}"
               "text.here{font-weight:bold;fill:#06c}</style>\n"
               "<rect x=\"-8\" y=\"-8\" width=\"100%\" height=\"100%\" style=\"fill:#fff;stroke:none\"/>\n" +
               body_ + "</svg>\n";
    }

 private:
    static constexpr std::size_t kWide = 8, kHigh = 16;

    static std::string pixels(std::size_t characters, std::size_t size) {
        return std::to_string(characters * size);
    }
    static std::string escaped(const std::string& text) {
        std::string safe;
        for (const char letter : text) {
            if (letter == '&' || letter == '<' || letter == '>') {
                safe += "&#" + std::to_string(static_cast<int>(letter)) + ';';
            } else {
                safe += static_cast<unsigned char>(letter) < ' ' ? '?' : letter;
            }
        }
        return safe;
    }

    std::string body_;
};

template <class SomeCanvas>
std::optional<std::string> drawn(const Wall& wall) {
    const Drawing drawing(wall);
    const Area size = drawing.size();
    if (size.width * size.height > kMostCharacters) {
        return std::nullopt;
    }
    SomeCanvas canvas;
    drawing.draw(canvas);
    return canvas.whole(size);
}

}  // namespace

std::optional<std::string> asText(const Wall& wall) { return drawn<TextCanvas>(wall); }

std::optional<std::string> asSvg(const Wall& wall) { return drawn<SvgCanvas>(wall); }

}  // namespace drawing
