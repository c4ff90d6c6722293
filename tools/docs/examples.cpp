#include "docs/examples.h"

#include <algorithm>
#include <map>
#include <set>

#include "remote/wire.h"
#include "remote/wire_text.h"
#include "words/message.h"

namespace docs {
namespace {

constexpr std::string_view kOpen = "<!-- ", kClose = " -->", kFence = "```", kNever = "never: ";

words::Message messageOf(const capture::Datagram& datagram) {
    return words::decode(datagram.bytes, {datagram.from.port, datagram.to.port});
}

/// Whether the kernel gave it to a program that asked for none.
bool isAnyPort(int port) {
    constexpr int kOwn[] = {wire::kCommandPort, wire::kOsdCommandPort, wire::kOsdKeyPort};
    constexpr int kFirst = 32768;
    return port >= kFirst && std::find(std::begin(kOwn), std::end(kOwn), port) == std::end(kOwn);
}

std::string block(const capture::Datagram& datagram, const words::Message& message) {
    const int from = datagram.from.port, to = datagram.to.port;
    return "from " + (isAnyPort(from) ? "any port" : "port " + std::to_string(from)) + " to " +
           (isAnyPort(to) ? "the port that asked" : "port " + std::to_string(to)) + "\n" +
           words::table(datagram.bytes, message);
}

class Writer {
 public:
    explicit Writer(const std::vector<capture::Datagram>& captured) {
        for (const capture::Datagram& datagram : captured) {
            const words::Message message = messageOf(datagram);
            blocks_.try_emplace(message.name + ": " + message.words, block(datagram, message));
            captured_.insert(message.name);
        }
    }

    Page write(std::string_view page) {
        while (!page.empty()) {
            const std::string_view line = page.substr(0, page.find('\n'));
            page.remove_prefix(std::min(page.size(), line.size() + 1));
            page_.text.append(line).append("\n");
            if (line.starts_with(kOpen) && line.ends_with(kClose)) {
                page = takeComment(
                    line.substr(kOpen.size(), line.size() - kOpen.size() - kClose.size()), page);
            }
        }
        for (const std::string& name : words::messageNames()) {
            if (!told_.contains(name)) {
                page_.problems.push_back("no example of: " + name);
            }
        }
        return std::move(page_);
    }

 private:
    /// Returns what is left of the page behind the old block.
    std::string_view takeComment(std::string_view comment, std::string_view rest) {
        if (comment.starts_with(kNever)) {
            const std::string name(comment.substr(kNever.size()));
            told_.insert(name);
            if (captured_.contains(name)) {
                page_.problems.push_back("it is sent: " + name);
            }
            return rest;
        }
        const std::string_view name = comment.substr(0, comment.find(": "));
        told_.emplace(name);
        const auto found = blocks_.find(std::string(comment));
        if (found == blocks_.end()) {
            page_.problems.push_back("never captured: " + std::string(comment));
            return rest;
        }
        page_.text.append(kFence).append("\n").append(found->second).append(kFence).append("\n");
        if (rest.starts_with(kFence)) {
            const std::size_t end = rest.find("\n```\n");
            rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 5);
        }
        return rest;
    }

    std::map<std::string, std::string, std::less<>> blocks_;  ///< by "NAME: WORDS"
    std::set<std::string, std::less<>> captured_;
    std::set<std::string, std::less<>> told_;
    Page page_;
};

}  // namespace

Page withExamples(std::string_view page, const std::vector<capture::Datagram>& captured) {
    return Writer(captured).write(page);
}

}  // namespace docs
