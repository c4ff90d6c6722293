#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

#include "base/path_prefix.h"

/// What `action` prints, standard output and standard error one after the other.
template <typename Action>
std::string printedBy(const Action& action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
}

inline std::string hex(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        char pair[4];
        std::snprintf(pair, sizeof pair, "%02x ", static_cast<unsigned char>(byte));
        text += pair;
    }
    return text.substr(0, text.size() - (text.empty() ? 0 : 1));
}

template <std::size_t N>
std::string hex(const std::array<std::uint8_t, N>& bytes) {
    return hex(std::string_view(reinterpret_cast<const char*>(bytes.data()), N));
}

/// A directory of its own for one test, removed afterwards.
class Scratch {
 public:
    Scratch() {
        std::string pattern = std::filesystem::temp_directory_path() / "tavrik-unit-XXXXXX";
        root_ = mkdtemp(pattern.data());
        chmod(root_.c_str(), 0755);
    }
    ~Scratch() { std::filesystem::remove_all(root_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string path(const std::string& name = "") const { return root_ + "/" + name; }

    std::string put(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }

    std::string get(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::set<std::string> names() const {
        std::set<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(root_)) {
            found.insert(entry.path().filename());
        }
        return found;
    }

 private:
    std::string root_;
};

/// One that stands before every absolute path while it lives.
struct Root : Scratch {
    Root() { setPathPrefix(path()); }
    ~Root() { setPathPrefix(""); }
};
