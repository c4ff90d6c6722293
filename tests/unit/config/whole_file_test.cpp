#include "config/whole_file.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>

#include <atomic>
#include <cerrno>
#include <csignal>

#include "config/software_config.h"
#include "unit/fixture.h"

namespace {

using Names = std::set<std::string>;

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

/// The error of every fsync, 0 for none; how many there were.
int failingFsync = 0;
std::atomic<int> flushes = 0;

mode_t permissionsOf(const std::string& path) {
    struct stat info {};
    stat(path.c_str(), &info);
    return info.st_mode & 07777;
}

TEST(WholeFile, KeepsPermissionsAndLinksAndNeverGoesBackInTime) {
    const Scratch scratch;
    EXPECT_TRUE(WholeFile(scratch.path("new")).replace("text", 1));
    EXPECT_EQ(permissionsOf(scratch.path("new")), 0644U);
    const std::string old = scratch.put("old", "a longer text than the next one");
    chmod(old.c_str(), 0640);
    std::filesystem::create_symlink("old", scratch.path("link"));
    WholeFile link(scratch.path("link"));
    EXPECT_TRUE(link.replace("next", 2));
    EXPECT_TRUE(link.replace("a save that was overtaken", 1));
    EXPECT_EQ(scratch.get("old"), "next");
    EXPECT_EQ(permissionsOf(old), 0640U);
    EXPECT_TRUE(std::filesystem::is_symlink(scratch.path("link")));
    std::filesystem::create_symlink("later", scratch.path("ahead"));
    EXPECT_TRUE(WholeFile(scratch.path("ahead")).replace("made", 1));
    EXPECT_EQ(scratch.get("later"), "made");
    EXPECT_EQ(scratch.names(), (Names{"new", "old", "link", "ahead", "later"}));
}

TEST(WholeFile, KeepsTheOldTextWhereThereIsNoRoomForASecondFile) {
    const Scratch scratch;
    if (unshare(CLONE_NEWNS) != 0 ||
        mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("full", scratch.path().c_str(), "tmpfs", 0, "nr_inodes=2") != 0) {
        GTEST_SKIP() << "no file system can be mounted here";
    }
    WholeFile file(scratch.put("file", "old"));
    EXPECT_FALSE(file.replace("new", 1));
    EXPECT_EQ(scratch.get("file"), "old");
    mount("full", scratch.path().c_str(), nullptr, MS_REMOUNT, "nr_inodes=9,size=64k");
    chmod(scratch.path("file").c_str(), 0666);
    chmod(scratch.path().c_str(), 0555);
    {
        const Unprivileged user;  // who may only write in place
        EXPECT_FALSE(file.replace(std::string(100'000, 'x'), 2));
        EXPECT_EQ(scratch.get("file"), "old");
        EXPECT_TRUE(file.replace(std::string(30'000, 'x'), 3));
        EXPECT_TRUE(file.replace("short", 4));
    }
    EXPECT_EQ(scratch.get("file"), "short");
    umount(scratch.path().c_str());
}

/// What the file system refuses by nature is no failure; what it fails to do is.
TEST(WholeFile, FailsOnlyWhereTheTextIsNotSafe) {
    const Scratch scratch;
    const std::pair<int, bool> rows[] = {
        {EINVAL, true}, {EPERM, true}, {ENOTSUP, true}, {EIO, false}, {0, true}};
    std::uint64_t order = 0;
    for (const auto& [error, saved] : rows) {
        const std::string text = "text " + std::to_string(++order);
        failingFsync = error;
        EXPECT_EQ(WholeFile(scratch.path("file")).replace(text, order), saved) << error;
        failingFsync = 0;
        EXPECT_EQ(scratch.get("file") == text, saved) << error;
    }
}

TEST(WholeFile, IsLeftAloneWhileItHoldsWhatWasWrittenLast) {
    const Scratch scratch;
    const std::string path = scratch.put("file", "same");
    WholeFile file(path);
    std::uint64_t order = 0;
    /// Whether the save of `text` put another file in the old one's place.
    const auto replaces = [&](const std::string& text) {
        std::filesystem::remove(scratch.path("kept"));
        std::error_code missing;
        std::filesystem::create_hard_link(path, scratch.path("kept"), missing);
        EXPECT_TRUE(file.replace(text, ++order));
        EXPECT_EQ(scratch.get("file"), text);
        return !std::filesystem::exists(scratch.path("kept")) ||
               !std::filesystem::equivalent(path, scratch.path("kept"));
    };
    flushes = 0;
    file.isRead("same");
    EXPECT_FALSE(replaces("same"));
    EXPECT_EQ(flushes, 1) << "somebody else's text may not be on the disk yet";
    EXPECT_FALSE(replaces("same"));
    EXPECT_EQ(flushes, 1);
    EXPECT_TRUE(file.replace("older", order - 1)) << "a save that was overtaken";
    EXPECT_EQ(scratch.get("file"), "same");
    EXPECT_TRUE(replaces("next"));
    EXPECT_TRUE(replaces("same"));
    scratch.put("file", "");
    EXPECT_TRUE(replaces("same")) << "over nothing";
    std::filesystem::remove(path);
    EXPECT_TRUE(replaces("same"));
    chmod(path.c_str(), 0444);
    chmod(scratch.path().c_str(), 0777);
    const Unprivileged user;
    EXPECT_FALSE(file.replace("same", ++order)) << "a file that refuses is told as ever";
}

TEST(WholeFile, TellsOnceWhenItIsWrittenOften) {
    const Scratch scratch;
    WholeFile file(scratch.path("file"));
    std::string told;
    for (std::uint64_t order = 1; order <= 23; ++order) {
        EXPECT_TRUE(file.replace(std::to_string(order / 2), order));  // every other one is written
        told += file.takeBusy() ? std::to_string(order) + " " : "";
    }
    EXPECT_EQ(told, "20 ");
}

TEST(WholeFile, IsWrittenInPlaceWhereTheDirectoryRefuses) {
    const Scratch scratch;
    const std::string path = scratch.put("file", "the old and longer text");
    const std::string unusable("settings\0", 9);
    chmod(path.c_str(), 0666);
    chmod(scratch.put("ini", unusable).c_str(), 0666);
    chmod(scratch.path().c_str(), 0555);
    {
        const Unprivileged user;
        WholeFile file(path);
        EXPECT_TRUE(file.replace("second", 2));
        EXPECT_TRUE(file.replace("first", 1));
        EXPECT_FALSE(WholeFile(scratch.path("missing")).replace("text", 1));
        SoftwareConfig config(scratch.path("ini"));
        config.ReadConfig();
        EXPECT_FALSE(config.SaveConfig()) << "over settings that could not be set aside";
    }
    chmod(scratch.path().c_str(), 0755);
    EXPECT_EQ(scratch.get("file"), "second");
    EXPECT_EQ(scratch.get("ini"), unusable);
    EXPECT_EQ(scratch.names(), (Names{"file", "ini"}));
}

TEST(WholeFile, NothingIsSavedOverSettingsThatCannotBeKeptYet) {
    const Scratch scratch;
    const std::string path = scratch.put("ini", "# mine\n");
    chmod(path.c_str(), 0666);
    SoftwareConfig config(path);
    config.ReadConfig();
    chmod(scratch.path().c_str(), 0555);
    {
        const Unprivileged user;
        EXPECT_EQ(config.keepFile(config.lostByASave()),
                  "settings: \"# mine\" is not kept; the file cannot be kept, nothing will be "
                  "saved over it");
        EXPECT_EQ(printedBy([&config] { EXPECT_FALSE(config.SaveConfig()); }),
                  "[SaveConfig]-114: save config failed\nsettings: " + path +
                      " is not written: it holds what could not be kept\n");
    }
    chmod(scratch.path().c_str(), 0755);
    EXPECT_EQ(scratch.get("ini"), "# mine\n");
    EXPECT_TRUE(config.SaveConfig());
    EXPECT_EQ(scratch.get("ini.before"), "# mine\n");
}

TEST(WholeFile, KeepsTheOldTextWhenTheDiskTakesNoMore) {
    const Scratch scratch;
    WholeFile file(scratch.put("file", "old"));
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{1000, before.rlim_max};
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    const bool replaced = file.replace(std::string(5000, 'x'), 1);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(replaced);
    EXPECT_EQ(scratch.get("file"), "old");
    EXPECT_EQ(scratch.names(), Names{"file"});
}

TEST(WholeFile, FailsOnWhatIsNoFileToWriteAndRemovesOnlyOldFilesOfItsOwn) {
    const Scratch scratch;
    std::filesystem::create_directory(scratch.path("directory"));
    ASSERT_EQ(mkfifo(scratch.path("fifo").c_str(), 0666), 0);
    chmod(scratch.put("readonly", "old").c_str(), 0444);
    chmod(scratch.path().c_str(), 0777);
    {
        const Unprivileged user;
        for (const char* name : {"directory", "fifo", "readonly", "missing/file"}) {
            EXPECT_FALSE(WholeFile(scratch.path(name)).replace("text", 1)) << name;
        }
    }
    for (const char* name :
         {"fifo.tmp-Ab12Cd", "fifo.tmp-toolong", "other.tmp-Ab12Cd", "fifo.tmp-my.txt"}) {
        const timeval old[2] = {{1000, 0}, {1000, 0}};
        utimes(scratch.put(name, "x").c_str(), old);
    }
    scratch.put("fifo.tmp-Young1", "x");
    WholeFile(scratch.path("fifo")).removeLeftovers();
    EXPECT_EQ(scratch.names(), (Names{"directory", "fifo", "readonly", "fifo.tmp-toolong",
                                      "other.tmp-Ab12Cd", "fifo.tmp-my.txt", "fifo.tmp-Young1"}));
}

}  // namespace

/// In the place of the library's.
extern "C" int fsync(int fd) {
    ++flushes;
    if (failingFsync != 0) {
        errno = failingFsync;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsync, fd));
}
