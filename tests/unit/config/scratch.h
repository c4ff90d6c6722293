#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

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

/// File access as an ordinary user, when the tests run as root.
class Unprivileged {
 public:
    Unprivileged() : changed_(geteuid() == 0 && seteuid(65534) == 0) {}
    ~Unprivileged() {
        if (changed_ && seteuid(0) != 0) {
            std::abort();
        }
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

 private:
    bool changed_;
};
