#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <thread>

#include "rows.h"
#include "subject.h"

/// What a report costs: system calls by name (strace) and instructions (callgrind).

namespace {

using Records = std::function<std::vector<InputRecord>(int)>;

struct Kind {
    const char* name;
    int node;
    char mark;    ///< the third byte of the report
    int reports;  ///< of one write
    Records records;
};

const Kind kMovement{"a movement", 1, 4, 1, [](int i) { return movement(i % 2 == 0 ? 1 : -1, 0); }};
const Kind kSingleKey{"a single key", 0, 1, 1, [](int i) { return key(i % 2 == 0); }};
const Kind kBurst{"a key in a burst", 0, 1, 40, [](int /*i*/) {
                      std::vector<InputRecord> records;
                      for (int i = 0; i < 40; ++i) {
                          const auto one = key(i % 2 == 0);
                          records.insert(records.end(), one.begin(), one.end());
                      }
                      return records;
                  }};

std::string temporaryFile(const char* name) {
    return std::filesystem::temp_directory_path() /
           (std::string("tavrik-bench-") + name + "-" + std::to_string(getpid()));
}

/// Gives the subject `writes` writes of that kind, each when the one before was told.
void play(const Subject& subject, const Kind& kind, int writes, int pauseMs) {
    for (int i = 0; i < writes; ++i) {
        subject.put(kind.node, kind.records(i));
        for (int report = 0; report < kind.reports; ++report) {
            subject.next(2000);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
    }
}

/// One line of a trace: who called what.
struct Call {
    std::string thread, name;
    bool isReport = false, isLog = false;
};

std::vector<Call> readTrace(const std::string& file, char kind) {
    const std::string mark = std::string("\"W\\253\\") + static_cast<char>('0' + kind);
    std::vector<Call> calls;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t name = line.find_first_not_of("0123456789 ");
        const std::size_t bracket = line.find('(');
        if (name == std::string::npos || bracket == std::string::npos ||
            std::isalpha(static_cast<unsigned char>(line[name])) == 0) {
            continue;  // the rest of a call that was interrupted
        }
        Call call{line.substr(0, line.find(' ')), line.substr(name, bracket - name)};
        call.isReport = call.name == "sendto" && line.find(mark) != std::string::npos;
        call.isLog = call.name == "write" && line.compare(bracket, 3, "(1,") == 0;
        calls.push_back(call);
    }
    return calls;
}

/// System calls a report of a console, by name: those of the threads that send and that write the
/// log, between the first report and the last.
std::map<std::string, double> systemCalls(const Kind& kind) {
    const std::string trace = temporaryFile("trace");
    {
        Subject console({Program::kConsole, 1, -1, {"strace", "-f", "-qq", "-o", trace}});
        play(console, kind, 101, 5);
    }
    const std::vector<Call> calls = readTrace(trace, kind.mark);
    std::filesystem::remove(trace);
    std::set<std::string> threads;
    for (const Call& call : calls) {
        if (call.isReport || call.isLog) {
            threads.insert(call.thread);
        }
    }
    const auto isReport = [](const Call& call) { return call.isReport; };
    const auto first = std::find_if(calls.begin(), calls.end(), isReport);
    const auto last = std::find_if(calls.rbegin(), calls.rend(), isReport).base();
    const double reports = static_cast<double>(std::count_if(first, last, isReport)) - 1;
    std::map<std::string, double> counts;
    for (auto call = first; call + 1 < last; ++call) {
        counts[call->name] += threads.count(call->thread) != 0 ? 1 / reports : 0;
    }
    return counts;
}

double total(const std::map<std::string, double>& calls) {
    double all = 0;
    for (const auto& [call, count] : calls) {
        all += count;
    }
    return all;
}

/// Instructions that callgrind collects while a subject serves so many reports.
double instructions(Program program, const Kind& kind, int reports) {
    const std::string out = temporaryFile("callgrind");
    {
        Subject subject(
            {program, 1, -1, {"valgrind", "--tool=callgrind", "--callgrind-out-file=" + out}});
        play(subject, kind, reports, 0);
    }
    double all = -1;
    std::ifstream lines(out);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("summary: ") || line.starts_with("totals: ")) {
            all = std::atof(line.c_str() + line.find(' '));
        }
    }
    std::filesystem::remove(out);
    return all;
}

/// Instructions that the emulator of the board's processor runs, one line of its trace each, while
/// a program of the build for the board serves so many reports.
double instructionsEmulated(const std::string& build, Program program, const Kind& kind,
                            int reports) {
    const std::string trace = temporaryFile("trace");
    if (mkfifo(trace.c_str(), 0600) != 0) {
        return -1;
    }
    double all = 0;
    std::jthread counter([&] {
        std::ifstream lines(trace);
        for (std::string line; std::getline(lines, line);) {
            all += line.starts_with("Trace ") ? 1 : 0;
        }
    });
    {
        Subject subject({program,
                         1,
                         -1,
                         {"qemu-arm", "-singlestep", "-d", "nochain,exec", "-D", trace},
                         build});
        play(subject, kind, reports, 0);
    }
    counter.join();
    std::filesystem::remove(trace);
    return all;
}

/// Of one report: the difference of a short and a long run. `build` is the directory of the build
/// for the board, empty for this machine's.
double instructionsOfOne(Program program, const Kind& kind, const std::string& build = "") {
    const auto of = [&](int reports) {
        return build.empty() ? instructions(program, kind, reports)
                             : instructionsEmulated(build, program, kind, reports);
    };
    const double few = of(200);
    const double many = of(1200);
    return few < 0 || many < 0 ? -1 : (many - few) / 1000;
}

void addInstructions(Table& table, const Kind& kind, const std::string& build = "") {
    const std::string name =
        "instructions of " + std::string(kind.name) + (build.empty() ? "" : ", ARM");
    progress(name);
    std::array<double, 3> counts{};
    for (const Program program : {Program::kConsole, Program::kPlainLoop, Program::kBatchLoop}) {
        counts[static_cast<std::size_t>(program)] = instructionsOfOne(program, kind, build);
    }
    if (counts[0] < 0) {
        table.addMissing(name, "it gave no total");
    } else {
        table.add(name, "", counts[0], counts[1], counts[2], counts[0] / counts[1]);
    }
}

void addCalls(Table& table, const Kind& kind) {
    progress(std::string("system calls of ") + kind.name);
    const auto calls = systemCalls(kind);
    table.add(std::string("system calls of ") + kind.name, "", total(calls));
    for (const auto& [call, count] : calls) {
        if (count >= 0.02) {
            table.add("  " + call, "", count);
        }
    }
}

}  // namespace

void measureCosts(Table& table) {
    for (const Kind* kind : {&kMovement, &kSingleKey, &kBurst}) {
        addCalls(table, *kind);
    }
    for (const Kind* kind : {&kMovement, &kSingleKey}) {
        addInstructions(table, *kind);
    }
}

void measureArm(Table& table, const std::string& build) {
    for (const Kind* kind : {&kMovement, &kSingleKey}) {
        addInstructions(table, *kind, build);
    }
}

void judgeBudget(Table& table) {
    const struct {
        const Kind& kind;
        double calls, instructions;  ///< at most; 0: not judged
    } limits[] = {{kMovement, 3.1, 4500}, {kSingleKey, 6.1, 8600}, {kBurst, 4, 0}};
    for (const auto& [kind, calls, most] : limits) {
        progress(std::string("costs of ") + kind.name);
        table.judge(std::string("system calls of ") + kind.name, total(systemCalls(kind)), calls);
        if (most > 0) {
            table.judge(std::string("instructions of ") + kind.name,
                        instructionsOfOne(Program::kConsole, kind), most);
        }
    }
    table.judge("processor time of a movement over the plain loop's", cpuRatioAtFullSpeed(), 0.7);
}
