#include "config/software_config.h"

#include <cstdio>
#include <cstring>
#include <numeric>
#include <string_view>
#include <utility>

#include "base/file_start.h"
#include "base/path_prefix.h"

namespace {

std::vector<std::string> defaultValues() {
    std::vector<std::string> values(kSettingCount);
    values[kServerPortIndex] = std::string("80");
    values[kOutNumIndex] = std::string("0");
    return values;
}

/// Lines may hold several keys, so the values can add up to more than the file.
bool valuesFit(const std::vector<std::string_view>& values) {
    const auto sum = std::accumulate(
        values.begin(), values.end(), std::uint64_t{0},
        [](std::uint64_t size, std::string_view value) { return size + value.size(); });
    return sum <= kSettingsLimit;
}

/// Why the file is not taken, or null.
const char* problemOf(const FileText& file) {
    switch (file.state) {
        case FileState::kNotRegular:
            return "is not a regular file";
        case FileState::kUnreadable:
            return "cannot be read";
        case FileState::kMissing:
        case FileState::kRead:
            break;
    }
    if (file.text.size() > kSettingsLimit) {
        return "is larger than 16 MiB";
    }
    return file.text.find('\0') != std::string::npos ? "holds a NUL byte" : nullptr;
}

}  // namespace

SoftwareConfig::SoftwareConfig(std::string path)
    : path_(std::move(path)), table_(Table{defaultValues()}), file_(prefixedPath(path_)) {}

SoftwareConfig::~SoftwareConfig() {
    std::printf("[%s]-%d: SoftwareConfig Normal Exit!\n", "~SoftwareConfig", 64);
}

bool SoftwareConfig::ReadConfig() {
    std::printf("[%s]-%d: read_config:%s\n", "ReadConfig", 69, path_.c_str());
    file_.removeLeftovers();
    const FileText file = readFileStart(prefixedPath(path_), kSettingsLimit + 1);
    const char* problem = problemOf(file);
    if (problem != nullptr) {
        refuse(problem, file.state != FileState::kNotRegular);
        return true;
    }
    read_ = file.text;
    file_.isRead(read_);
    const std::vector<std::string_view> values = settingsIn(read_);
    if (!valuesFit(values)) {
        refuse("holds values of more than 16 MiB", true);
        return true;
    }
    const std::string outNum = table_.with([&values](Table& table) {
        for (std::size_t index = 0; index < values.size(); ++index) {
            if (!values[index].empty()) {
                table.values[index] = values[index];
            }
        }
        return table.values[kOutNumIndex];
    });
    if (values.size() > kOutNumIndex) {
        outNum_ = settingNumber(outNum);
    }
    return true;
}

void SoftwareConfig::refuse(const char* problem, bool isRegular) {
    const std::string path = prefixedPath(path_);
    if (!isRegular) {
        std::printf("%s %s: no settings loaded\n", path_.c_str(), problem);
    } else if (file_.setAside(path + ".refused")) {
        std::printf("%s %s: no settings loaded, file kept as %s.refused\n", path_.c_str(), problem,
                    path_.c_str());
    } else {
        mayNotSave_ = true;
        std::printf("%s %s: no settings loaded, nothing will be saved over it\n", path_.c_str(),
                    problem);
    }
}

std::string SoftwareConfig::lostByASave() const {
    return notCarriedOver(
        read_, table_.with([](const Table& table) { return settingsText(table.values); }));
}

std::string SoftwareConfig::keepFile(const std::string& why) {
    if (why.empty() || read_.empty()) {
        return "";
    }
    const auto kept = file_.keep(read_);
    mayNotSave_ = mayNotSave_ || !kept;
    return "settings: " + why +
           (kept ? "; the file as it was is " + path_ + std::string(*kept)
                 : "; the file cannot be kept, nothing will be saved over it");
}

void SoftwareConfig::PrintConfig() const {
    const std::string lines =
        table_.with([](const Table& table) { return settingsText(table.values); });
    std::fputs(lines.c_str(), stdout);
}

bool SoftwareConfig::SaveConfig() {
    const auto [lines, order] = table_.with(
        [](Table& table) { return std::pair(settingsText(table.values), ++table.copies); });
    if (mayNotSave_ && !read_.empty() && file_.keep(read_)) {
        mayNotSave_ = false;  // the disk was full, or could not be written to
    }
    if (mayNotSave_ || !file_.replace(lines, order)) {
        std::printf("[%s]-%d: save config failed\n", "SaveConfig", 114);
        std::printf("settings: %s is not written: %s\n", path_.c_str(),
                    mayNotSave_ ? "it holds what could not be kept" : std::strerror(file_.error()));
        return false;
    }
    std::printf("[%s]-%d: save config succeed\n", "SaveConfig", 110);
    if (const auto edited = file_.takeEdited(); edited.was) {
        std::printf("settings: edited since the start and not read; the file as it was %s%s\n",
                    edited.kept ? ("is " + path_).c_str() : "could not be kept",
                    std::string(edited.kept.value_or("")).c_str());
    }
    if (file_.takeBusy()) {
        std::puts("settings: written more than 10 times in 10 s");
    }
    return true;
}

std::string SoftwareConfig::GetConfig(unsigned index) const {
    if (index >= kSettingCount) {
        return "error";
    }
    return table_.with([index](const Table& table) { return table.values[index]; });
}

bool SoftwareConfig::SetConfigChar(unsigned index, const std::string& text) {
    std::puts("set string");
    if (index >= kSettingCount) {
        return false;
    }
    std::string value = text.substr(0, text.find_first_of(std::string_view("\0\n", 2)));
    if (value.size() < text.size()) {
        std::printf("setting %u: the text behind the end of its line is left out\n", index);
    }
    const bool clears = value.starts_with("clear");
    table_.with([&](Table& table) {
        std::string& stored = table.values[index];
        if (clears && !stored.empty()) {
            value.clear();
        }
        stored.swap(value);
    });
    return true;
}

bool SoftwareConfig::SetConfig(unsigned index, const std::string& text) {
    return SetConfigChar(index, text);
}

bool SoftwareConfig::SetConfig(unsigned index, int number) {
    std::puts("setconfig int");
    if (index >= kSettingCount) {
        return false;
    }
    std::string value = std::to_string(number);
    table_.with([&](Table& table) { table.values[index].swap(value); });
    return true;
}

bool SoftwareConfig::LoadConfigToGlobal([[maybe_unused]] bool flag) { return true; }
