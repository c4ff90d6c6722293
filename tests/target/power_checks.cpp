#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <random>
#include <stdexcept>

#include "checks.h"
#include "machine/flash_writes.h"

/// The power goes at any instant while the settings are saved again and again on a real file
/// system: the old or the new settings are there, whole, and what was told to be saved is.

namespace {

constexpr int kSaves = 500;

/// The cells that order `number` sets: more or fewer, so that files of all sizes are saved.
std::string cells(int number) {
    std::string text = "#0,0,127.0.0.31";
    for (int x = 1; x <= 1 + number % 60; ++x) {
        text += '#' + std::to_string(x) + ",0,127.1." + std::to_string(number / 250) + '.' +
                std::to_string(number % 250 + 1);
    }
    return text;
}

std::string outputOf(const std::string& command) {
    std::string text;
    std::array<char, 4096> piece{};
    std::FILE* const program = popen(command.c_str(), "r");
    while (const std::size_t got = std::fread(piece.data(), 1, piece.size(), program)) {
        text.append(piece.data(), got);
    }
    pclose(program);
    return text;
}

std::string contentOf(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class Flash {
 public:
    /// An empty file system, in memory; its files go with this object.
    Flash() {
        const std::string make = "truncate -s 8M " + image_ + " && truncate -s 0 " + writes_ +
                                 " && mkfs.ext4 -q -F -E lazy_itable_init=0 " + image_;
        if (std::system(make.c_str()) != 0) {
            throw std::runtime_error("no file system can be made");
        }
        empty_ = contentOf(image_);
    }
    ~Flash() {
        std::remove(image_.c_str());
        std::remove(writes_.c_str());
    }
    Flash(const Flash&) = delete;
    Flash& operator=(const Flash&) = delete;

    const std::string& image() const { return image_; }
    const std::string& writes() const { return writes_; }
    const std::string& empty() const { return empty_; }

    /// The settings that a start after a power cut finds on a flash that holds `content`; nothing
    /// when its file system is beyond repair.
    std::optional<std::string> settingsIn(const std::string& content) const {
        std::ofstream(image_, std::ios::binary) << content;
        const int repaired = std::system(("e2fsck -fy " + image_ + " >/dev/null 2>&1").c_str());
        if (WEXITSTATUS(repaired) > 1) {  // 1: the journal was played back, and the like
            return std::nullopt;
        }
        return outputOf("debugfs -R 'cat /tav_rik.ini' " + image_ + " 2>/dev/null");
    }

 private:
    std::string image_ = "/dev/shm/tavrik-flash-" + std::to_string(getpid());
    std::string writes_ = image_ + ".writes";
    std::string empty_;
};

/// A save that the console told, and what the flash had been told by then.
struct Saved {
    std::string settings;
    std::size_t writes;
};

/// What stands in the file around the cells.
struct Around {
    std::string before, behind;
};

/// Gives an order and waits until it is saved.
Saved save(Console& console, const Flash& flash, const Around& around, int number) {
    console.machine.start("tavrik-target-guest order 'details&127.0.0.1" + cells(number) + "'");
    const bool told = !console.machine.await("save config succeed").empty();
    return {told ? around.before + cells(number) + around.behind : "no save",
            FlashWrites::countIn(flash.writes())};
}

/// A flash that nobody can write to costs the save and nothing else.
void checkReadOnly(Console& console) {
    Machine& machine = console.machine;
    machine.shell("mount -o remount,ro /data");
    machine.skip();
    machine.start("tavrik-target-guest order 'details&127.0.0.1" + cells(0) + "'");
    console.checks.isTrue("a flash that cannot be written to: the save fails",
                          !machine.await("save config failed").empty());
    console.expectBox("  control is there", {"pointer 0,0 buttons none"});
    console.tap("a");
    console.expectBox("  and keys arrive", {"lights caps off num off", "key down A", "keys up"});
    machine.shell("mount -o remount,rw /data");
}

/// What is found after the power went, for each save at two instants of it.
void judge(const std::vector<Saved>& saves, const Flash& flash, Checks& checks) {
    const FlashWrites writes(flash.writes());
    std::mt19937 random(1);
    int cuts = 0, torn = 0, beyondRepair = 0, older = 0, newer = 0;
    for (std::size_t i = 1; i < saves.size(); ++i) {
        const Saved &last = saves[i - 1], &next = saves[i];
        for (std::mt19937* const lost : {static_cast<std::mt19937*>(nullptr), &random}) {
            std::string content = flash.empty();
            writes.apply(content, last.writes + random() % (next.writes - last.writes + 1), lost);
            const auto found = flash.settingsIn(content);
            ++cuts;
            beyondRepair += found ? 0 : 1;
            older += found == last.settings ? 1 : 0;
            newer += found == next.settings ? 1 : 0;
            torn += found && found != last.settings && found != next.settings ? 1 : 0;
        }
    }
    std::printf(
        "%d power cuts in %zu writes and %zu flushes: %d times the old settings, %d times the new\n",
        cuts, writes.count(), writes.flushes(), older, newer);
    checks.isTrue("cuts fall before and after the change", older > cuts / 10 && newer > cuts / 10);
    checks.atMost("file systems beyond repair", beyondRepair, 0, "");
    checks.atMost("settings that are neither the old nor the new", torn, 0, "");
}

}  // namespace

void checkPowerCuts(const EmulatorPlan& machinePlan, const std::string& log, Checks& checks) {
    const Flash flash;
    EmulatorPlan plan = machinePlan;
    plan.flash = flash.image();
    plan.writes = flash.writes();
    std::vector<Saved> saves;
    {
        Machine machine(emulatorCommand(plan), log);
        checks.isTrue("the machine boots",
                      !machine.await("## ready", std::chrono::seconds(90)).empty());
        Console console{machine, checks, false, false};
        checkStart(console, "");
        checks.equal("its flash is a real file system", "1",
                     machine.shell("grep -c ' /data ext4 ' /proc/mounts"));
        checkReadOnly(console);
        save(console, flash, {}, 0);
        const std::string first = machine.shell("cat /data/tav_rik.ini") + '\n';
        const std::size_t at = std::min(first.find(cells(0)), first.size());
        const Around around{first.substr(0, at),
                            first.substr(std::min(at + cells(0).size(), first.size()))};
        for (int number = 1; number <= kSaves; ++number) {
            saves.push_back(save(console, flash, around, number));
        }
        machine.start("tavrik-target-guest order 'details&127.0.0.1" + cells(0) + "'");
    }  // the emulator is killed in the middle of it
    judge(saves, flash, checks);
}
