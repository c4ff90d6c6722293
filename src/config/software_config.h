#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/guarded.h"
#include "base/shared.h"
#include "config/config_lines.h"
#include "config/whole_file.h"

/// Every setting of the daemon as text, by index (the constants of config_lines.h), and the file
/// that keeps them. No operation saves by itself. Any thread may call any member; a save is taken
/// at one moment of the table, and an older table never replaces a newer one in the file.
class SoftwareConfig {
 public:
    static constexpr const char* kPath = "/data/tav_rik.ini";

    /// Applies the defaults; reads nothing. The path prefix applies to `path`.
    explicit SoftwareConfig(std::string path = kPath);
    ~SoftwareConfig();
    SoftwareConfig(const SoftwareConfig&) = delete;
    SoftwareConfig& operator=(const SoftwareConfig&) = delete;

    /// Loads the file; true in every case. A missing key below kFirstMapIndex ends the reading
    /// there. A file that cannot be meant (no regular file, a NUL byte, above kSettingsLimit) gets
    /// one line, changes nothing and is set aside with ".refused" behind its name.
    bool ReadConfig();

    /// What a save would not carry over of the file that was read, in words; empty when it is
    /// nothing.
    std::string lostByASave() const;

    /// Keeps the file that was read beside it (WholeFile::keep) for `why`, as lostByASave tells it.
    /// Returns the line that tells it, without its end; empty when nothing is lost. Where it cannot
    /// be kept, nothing will be saved over it.
    std::string keepFile(const std::string& why);

    /// Prints the lines that SaveConfig writes.
    void PrintConfig() const;

    /// Writes the file as WholeFile does. False when it cannot be written; the table is unchanged
    /// then.
    bool SaveConfig();

    /// A copy of the value, "error" for an index of 4096 or more.
    std::string GetConfig(unsigned index) const;

    /// Stores `text`, up to its first NUL or line end. A text that begins with "clear" empties an
    /// entry that is not empty. False for an index of 4096 or more.
    bool SetConfigChar(unsigned index, const std::string& text);
    bool SetConfig(unsigned index, const std::string& text);

    /// Stores the decimal text of `number`. False for an index of 4096 or more.
    bool SetConfig(unsigned index, int number);

    /// Does nothing; true.
    bool LoadConfigToGlobal(bool flag);

    /// kOutNum as a number, as ReadConfig last found it; 0 before.
    std::int32_t outNum() const { return outNum_; }

 private:
    struct Table {
        std::vector<std::string> values;
        std::uint64_t copies = 0;  ///< how often it was copied out for a save
    };

    void refuse(const char* problem, bool isRegular);

    const std::string path_;
    std::string read_;  ///< the file as it was; not changed once there are threads
    Guarded<Table> table_;
    Shared<std::int32_t> outNum_{0};
    Shared<bool> mayNotSave_{false};  ///< what stands in the file could not be kept elsewhere
    WholeFile file_;
};
