// Fails every distinct call of the plug-in that can fail, one in each forked process, and checks
// what is left. Prints a table for docs/reliability.md; exits with 1 if any case breaks a rule.
//
//   fault_sweep [--brief] [--scenario NAME] [--verbose]
#include "tests/faults/calls.h"
#include "tests/faults/declared.h"
#include "tests/faults/scenarios.h"

#include <maya/MStatus.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <sstream>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace faults;

constexpr size_t k_max_sites = 64;

/// What a case left behind; in memory shared with the process that ran it.
struct Outcome {
    bool finished, failed, act_ok, undo_ok, was_undone;
    int evaluation; ///< status of the act's last evaluation
    uint64_t before, after, undone, next;
    size_t entries, nodes_before, nodes_after, nodes_undone, site_count;
    LiveSite sites[k_max_sites];
    char text[4096];
};

/// The call to fail; number 0: none.
struct Case {
    CallKind kind = CallKind::point;
    uint32_t number = 0;
    const char* point = nullptr;
    uint64_t caller = 0;
    bool in_platform = false;
};

constexpr int k_code = MStatus::kLicenseFailure; ///< with which calls of the host fail

constexpr size_t k_max_stated = 64;

struct Totals {
    size_t calls = 0, stacks = 0, cases = 0, broken = 0;
    bool stated[k_max_stated] = {}; ///< which rows of k_stated were met
};

bool g_verbose = false;

bool is_host(const char* point) {
    return point != nullptr && point[0] == 'M' && std::strstr(point, "::") != nullptr;
}

int code_for(const char* point) {
    return is_host(point) ? k_code : static_cast<int>(0x80004005u); // E_FAIL
}

/// Standard error of the cases, emptied before each of them.
int errors_file() {
    static const int file = memfd_create("errors", 0);
    return file;
}

/// Keeps the output of the scripts and of standard error so far.
void keep_text(Outcome& outcome, const std::string& scripts) {
    std::string text = scripts;
    std::array<char, 4096> bytes;
    off_t at = 0;
    for (ssize_t n; (n = pread(errors_file(), bytes.data(), bytes.size(), at)) > 0; at += n)
        text.append(bytes.data(), static_cast<size_t>(n));
    std::snprintf(outcome.text, sizeof(outcome.text), "%s", text.c_str());
}

/// What precedes the act. The same in every process, so that calls have the same numbers.
void begin(World& world, Outcome& outcome) {
    world.text.clear();
    outcome.before = world.mesh("boxShape");
    outcome.nodes_before = world.node_count();
    outcome.entries = world.undo_count();
}

/// Runs one case; in the child process.
void run_case(World& world, const Scenario& scenario, const Case& one, Outcome& outcome) {
    dup2(errors_file(), STDERR_FILENO);
    begin(world, outcome);
    if (one.number != 0)
        start_failing(one.kind, one.number, code_for(one.point));
    else
        start_tracking();
    outcome.act_ok = scenario.act(world);
    stop();
    outcome.evaluation = world.evaluation.statusCode();
    outcome.failed = has_failed();
    keep_text(outcome, world.text);
    outcome.after = world.mesh("boxShape");
    outcome.nodes_after = world.node_count();
    outcome.was_undone = world.undo_count() > outcome.entries;
    outcome.undo_ok = !outcome.was_undone || world.run("undo");
    outcome.undone = world.mesh("boxShape");
    outcome.nodes_undone = world.node_count();
    outcome.next = next_unwrap(world);
    world.run("file -f -new");
    outcome.site_count = live_sites(outcome.sites, k_max_sites);
    outcome.finished = true;
}

/// Forks a process for a case and waits for it. Returns its wait status, -1 if it hung.
int fork_case(World& world, const Scenario& scenario, const Case& one, Outcome& outcome) {
    std::memset(&outcome, 0, sizeof(outcome));
    if (ftruncate(errors_file(), 0) != 0 || lseek(errors_file(), 0, SEEK_SET) != 0)
        return -1;
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        alarm(10);
        run_case(world, scenario, one, outcome);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (!outcome.finished)
        keep_text(outcome, "");
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM ? -1 : status;
}

std::vector<Call> record_calls(World& world, const Scenario& scenario) {
    const pid_t child = fork();
    if (child == 0) {
        dup2(errors_file(), STDERR_FILENO);
        Outcome ignored;
        begin(world, ignored);
        start_recording();
        scenario.act(world);
        stop();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    size_t count = 0;
    const Call* const calls = recorded_calls(count);
    return std::vector<Call>(calls, calls + count);
}

/// The first, second and last call of every distinct stack; only the first if `brief`.
std::vector<Case> choose_cases(const std::vector<Call>& calls, bool brief, size_t& stacks) {
    std::map<std::pair<uint64_t, std::string>, std::vector<const Call*>> by_stack;
    for (const Call& call : calls)
        by_stack[{call.stack, call.point == nullptr ? "" : call.point}].push_back(&call);
    stacks = by_stack.size();
    std::vector<Case> cases;
    for (const auto& entry : by_stack) {
        const auto& same = entry.second;
        std::set<const Call*> chosen = {same.front()};
        if (!brief)
            chosen.insert({same[same.size() > 1 ? 1 : 0], same.back()});
        for (const Call* call : chosen)
            cases.push_back(
                {call->kind, call->number, call->point, call->caller, call->in_platform});
    }
    return cases;
}

/// Sites with more memory left than in the reference.
std::vector<LiveSite> leaks(const Outcome& outcome, const Outcome& reference) {
    std::vector<LiveSite> found;
    for (size_t i = 0; i < outcome.site_count; ++i) {
        const LiveSite& site = outcome.sites[i];
        const LiveSite* const end = reference.sites + reference.site_count;
        const LiveSite* const same = std::find_if(reference.sites, end, [&](const LiveSite& other) {
            return other.caller == site.caller && other.in_platform == site.in_platform;
        });
        if (same == end || site.count > same->count)
            found.push_back(site);
    }
    return found;
}

/// The function that a return address of the plug-in or the platform library lies in.
std::string function_at(uint64_t caller, bool in_platform) {
    static std::map<std::pair<uint64_t, bool>, std::string> known;
    std::string& name = known[{caller, in_platform}];
    if (!name.empty())
        return name;
    char command[512];
    std::snprintf(command, sizeof(command), "addr2line -f -C -e %s 0x%llx",
                  in_platform ? TESSORA_PLATFORM_FILE : TESSORA_PLUGIN_FILE,
                  static_cast<unsigned long long>(caller - 1));
    std::FILE* const pipe = popen(command, "r");
    char line[512] = "?";
    if (pipe != nullptr && std::fgets(line, sizeof(line), pipe) == nullptr)
        line[0] = '?';
    if (pipe != nullptr)
        pclose(pipe);
    name = line;
    const std::string unnamed = "(anonymous namespace)::";
    for (size_t at; (at = name.find(unnamed)) != std::string::npos;)
        name.erase(at, unnamed.size());
    name.resize(std::min(name.find_first_of("(\n"), name.size()));
    return name;
}

/// The first line that is not the echo of a statement that publishes results; empty if none.
std::string first_message(const Outcome& outcome) {
    std::istringstream lines(outcome.text);
    for (std::string line; std::getline(lines, line);)
        if (!line.empty() && line.rfind("setAttr ", 0) != 0)
            return line;
    return "";
}

/// Whether text and status are those that belong to the call.
std::string broken_promise(const Case& one, const std::string& function, const Outcome& outcome) {
    const Stated* const stated = stated_for(one.point, function);
    if (stated != nullptr && std::strstr(outcome.text, stated->text) == nullptr)
        return std::string("does not say \"") + stated->text + "\"";
    if (outcome.act_ok || !is_host(one.point) || std::strchr(one.point, ',') != nullptr ||
        may_change_the_status(one.point, function))
        return "";
    const bool is_returned =
        outcome.evaluation == k_code || std::strstr(outcome.text, "(kLicenseFailure)") != nullptr;
    return is_returned ? "" : "ends in another status than the call's";
}

/// The rules that hold after any failing call.
std::string broken_rule(const Scenario& scenario, const Case& one, int status,
                        const Outcome& outcome, const Outcome& reference) {
    const std::string function = function_at(one.caller, one.in_platform);
    if (status == -1)
        return "hangs";
    if (!outcome.finished)
        return std::strstr(outcome.text, "BUG at") != nullptr
                   ? ""
                   : "the process ends: " +
                         std::string(WIFSIGNALED(status) ? strsignal(WTERMSIG(status)) : "exit");
    if (!outcome.failed)
        return "the call was not made";
    const bool is_declared = may_change_the_result(one.point, function);
    const bool is_silent = first_message(outcome).empty();
    if (is_silent && !is_declared && (!outcome.act_ok || outcome.after != reference.after))
        return outcome.act_ok ? "another result without a message" : "fails without a message";
    const std::string promise = broken_promise(one, function, outcome);
    if (!promise.empty())
        return promise;
    const bool is_partial = outcome.after != outcome.before && outcome.after != reference.after;
    if (is_partial && !is_declared && scenario.is_all_or_nothing)
        return "the mesh is neither unchanged nor unwrapped";
    if (!outcome.act_ok && !may_leave_nodes(one.point) && scenario.is_all_or_nothing &&
        outcome.nodes_after != outcome.nodes_before && outcome.nodes_after != reference.nodes_after)
        return "nodes are left behind";
    if (!outcome.undo_ok)
        return "undo fails";
    // Where undo leaves a difference after an ordinary run too, that is reported once.
    if (outcome.was_undone && reference.undone == reference.before &&
        outcome.undone != outcome.before)
        return "undo does not restore the mesh";
    if (outcome.was_undone && reference.nodes_undone == reference.nodes_before &&
        outcome.nodes_undone != outcome.nodes_before)
        return "undo does not restore the nodes";
    if (outcome.next != reference.next)
        return "the next unwrap differs or fails";
    for (const LiveSite& site : leaks(outcome, reference)) {
        const std::string source = function_at(site.caller, site.in_platform);
        if (!is_declared_leak(source))
            return "leaks memory allocated by " + source;
    }
    return "";
}

/// One line for all calls with the same name, caller and consequence.
std::string describe(const Case& one, const std::string& rule, const Outcome& outcome) {
    const std::string name = one.point == nullptr ? "allocation" : one.point;
    return (rule.empty() ? "ok: " : "BROKEN: ") + name + " in " +
           function_at(one.caller, one.in_platform) + (rule.empty() ? "" : ": " + rule) + " | " +
           first_message(outcome);
}

void report_undo(const Outcome& reference) {
    if (!reference.was_undone)
        return;
    if (reference.undone != reference.before)
        std::printf("  note: undo does not restore the mesh even if no call fails\n");
    if (reference.nodes_undone != reference.nodes_before)
        std::printf("  note: undo does not restore the nodes even if no call fails\n");
}

Totals sweep(const Scenario& scenario, bool brief) {
    World world;
    prepare_calls();
    scenario.prepare(world);
    auto& outcome = *static_cast<Outcome*>(
        mmap(nullptr, sizeof(Outcome), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    Totals totals;
    fork_case(world, scenario, Case(), outcome);
    const Outcome reference = outcome;
    if (!reference.finished || !reference.act_ok || reference.next == 0) {
        std::printf("  BROKEN without any failing call: %s\n", reference.text);
        totals.broken = 1;
        return totals;
    }
    const std::vector<Call> calls = record_calls(world, scenario);
    totals.calls = calls.size();
    report_undo(reference);
    std::map<std::string, size_t> lines;
    for (const Case& one : choose_cases(calls, brief, totals.stacks)) {
        const int status = fork_case(world, scenario, one, outcome);
        const std::string rule = broken_rule(scenario, one, status, outcome, reference);
        totals.cases += 1;
        if (const Stated* stated = stated_for(one.point, function_at(one.caller, one.in_platform)))
            totals.stated[stated - k_stated] = true;
        totals.broken += rule.empty() ? 0 : 1;
        if (g_verbose || !rule.empty())
            lines[describe(one, rule, outcome)] += 1;
    }
    for (const auto& [line, count] : lines)
        std::printf("  %zu x %s\n", count, line.c_str());
    return totals;
}

/// Every scenario starts in a process of its own.
Totals fork_sweep(const Scenario& scenario, bool brief) {
    auto& totals = *static_cast<Totals*>(
        mmap(nullptr, sizeof(Totals), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    totals.broken = 1;
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        totals = sweep(scenario, brief);
        std::fflush(stdout);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    return totals;
}

} // namespace

int main(int argc, char** argv) {
    bool brief = false;
    std::string only;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--brief")
            brief = true;
        else if (word == "--verbose")
            g_verbose = true;
        else if (word == "--scenario" && i + 1 < argc)
            only = argv[++i];
        else
            return std::fprintf(stderr, "fault_sweep: unknown word %s\n", argv[i]), 2;
    }
    bool all_good = true;
    bool stated[k_max_stated] = {};
    std::vector<std::string> rows;
    for (const Scenario& scenario : faults::scenarios()) {
        if (!only.empty() && only != scenario.name)
            continue;
        const auto start = std::chrono::steady_clock::now();
        std::printf("%s\n", scenario.name);
        const Totals totals = fork_sweep(scenario, brief);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        char row[200];
        std::snprintf(row, sizeof(row), "| %s | %zu | %zu | %zu | %zu | %.0f s |", scenario.name,
                      totals.calls, totals.stacks, totals.cases, totals.cases - totals.broken,
                      time.count());
        rows.push_back(row);
        all_good = all_good && totals.broken == 0;
        for (size_t i = 0; i < k_stated_count; ++i)
            stated[i] = stated[i] || totals.stated[i];
    }
    for (size_t i = 0; i < k_stated_count && only.empty(); ++i)
        if (!stated[i]) { // a function was renamed or inlined, so its text is not checked any more
            std::printf("never made: %s in %s\n", k_stated[i].point, k_stated[i].caller);
            all_good = false;
        }
    std::printf("\n| scenario | calls | distinct stacks | failed | survived | time |\n"
                "|---|---|---|---|---|---|\n");
    for (const std::string& row : rows)
        std::printf("%s\n", row.c_str());
    return all_good ? 0 : 1;
}
