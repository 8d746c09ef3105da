/// Unwraps thousands of times in one process, with undo, redo, deletion, new scenes, and unloading
/// and loading of the plug-in in between, and measures how memory in use grows.
///
///   endurance [UNWRAPS]     default 10,000
///
/// The plug-in leaks some objects on purpose. Each kind is allocated by a function of its own
/// (platform/d3dx9/object.h), so its blocks are recognized by that function's name on the stack
/// when they are allocated, and subtracted by name. Prints one line per sample and the slope of the
/// rest by least squares; exits with 1 if it is 100 bytes per unwrap or more.
#include "host/commands/session.h"
#include "host/graph/plugins.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <iostream>
#include <link.h>
#include <malloc.h>
#include <string>
#include <vector>

extern "C" void* __libc_calloc(size_t count, size_t size);

namespace {

constexpr double k_max_slope = 100.0; // bytes per unwrap
constexpr int k_unwraps_per_round = 10;
constexpr const char* k_leaking_functions[] = {"allocate_remap_buffer", "allocate_abandoned_mesh",
                                               "allocate_abandoned_device",
                                               "allocate_abandoned_direct3d"};
constexpr size_t k_functions = std::size(k_leaking_functions);

/// Code addresses of a function.
struct Range {
    uintptr_t begin = 0, end = 0;
};

struct Declared {
    Range code[k_functions];
    size_t blocks[k_functions] = {};
    size_t bytes = 0;
    bool is_counting = false;
};

Declared& declared() {
    static Declared the_declared;
    return the_declared;
}

/// The address at which a shared library is loaded; 0 if it is not.
uintptr_t base_of(const char* library, std::string& path) {
    struct Search {
        const char* library;
        std::string path;
        uintptr_t base = 0;
    } search{library, "", 0};
    dl_iterate_phdr(
        [](dl_phdr_info* info, size_t, void* data) {
            auto& wanted = *static_cast<Search*>(data);
            if (!info->dlpi_name || !std::strstr(info->dlpi_name, wanted.library))
                return 0;
            wanted.path = info->dlpi_name;
            wanted.base = info->dlpi_addr;
            return 1;
        },
        &search);
    path = search.path;
    return search.base;
}

/// Finds the functions in the library's symbol table. The library moves when the plug-in is loaded
/// again, so this is repeated then.
bool find_functions() {
    Declared& found = declared();
    std::string path;
    const uintptr_t base = base_of("libtessora_d3dx9", path);
    if (base == 0)
        return false;
    FILE* symbols = popen(("nm -S '" + path + "'").c_str(), "r");
    if (!symbols)
        return false;
    size_t known = 0;
    char line[1024];
    while (std::fgets(line, sizeof line, symbols)) {
        unsigned long address = 0, size = 0;
        char kind = 0, name[900];
        if (std::sscanf(line, "%lx %lx %c %899s", &address, &size, &kind, name) != 4)
            continue;
        for (size_t i = 0; i < k_functions; ++i)
            if (std::strstr(name, k_leaking_functions[i])) {
                found.code[i] = {base + address, base + address + size};
                ++known;
            }
    }
    pclose(symbols);
    return known == k_functions;
}

/// Counts a new block if a function that leaks on purpose allocated it.
void count(void* block) {
    Declared& found = declared();
    found.is_counting = false; // backtrace may allocate on its first call
    void* frames[8];
    const int depth = backtrace(frames, 8);
    for (int frame = 0; frame < depth; ++frame)
        for (size_t i = 0; i < k_functions; ++i) {
            const auto at = reinterpret_cast<uintptr_t>(frames[frame]);
            if (at < found.code[i].begin || at >= found.code[i].end)
                continue;
            ++found.blocks[i];
            found.bytes += malloc_usable_size(block) + sizeof(size_t); // with the block's header
        }
    found.is_counting = true;
}

class Silent : public host::script::Output {
public:
    void print(const std::string&) override {}
    void warning(const std::string& text) override { std::cerr << "warning: " << text << "\n"; }
    void error(const std::string& text) override { std::cerr << "error: " << text << "\n"; }
};

void run(const std::string& statements) {
    const auto outcome = host::script::Session::current().run(statements, "endurance");
    if (!outcome.ok)
        std::exit(2);
}

/// Ten unwraps in every way a user can make one, and what users do with them.
void run_round() {
    const std::string unwrap = "tessora; polyEvaluate -uvcoord;";
    run("loadPlugin tessora;");
    if (!find_functions()) {
        std::cerr << "endurance: the functions that leak on purpose were not found\n";
        std::exit(2);
    }
    declared().is_counting = true;
    run("polyCube -n box -sx 3 -sy 3 -sz 3;" + unwrap); // with history
    run("undo;");
    run("redo;");
    run("tessora -stretch 0.3; polyEvaluate -uvcoord box;"); // history upon history
    run("setAttr tessora_node2.Skip_compute 0; polyEvaluate -uvcoord box;");
    run("delete box;");
    run("undo;");
    run("delete -constructionHistory box;");
    run("move -r 0.1 0 0 box.vtx[3];");
    run("select box;" + unwrap); // without history, recorded, with a tweak
    run("undo;");
    run("redo;");
    run("polyEvaluate -uvcoord box;");
    run("delete -constructionHistory box;");
    run("constructionHistory -toggle off;");
    run("select box;" + unwrap); // directly
    run("undo;");
    run("redo;");
    run("constructionHistory -toggle on;");
    run("undoInfo -state off;");
    for (int i = 0; i < 4; ++i)
        run("polySphere -n ball -sx 8 -sy 6;" + unwrap + "delete ball;");
    run("undoInfo -state on;");
    run("duplicate box; tessora; polyEvaluate -uvcoord;");
    run("select box;" + unwrap);
    run("file -f -new;");
    declared().is_counting = false;
    run("unloadPlugin tessora;");
}

struct Sample {
    double unwraps, bytes;
};

double slope(const std::vector<Sample>& samples) {
    double x = 0, y = 0, xx = 0, xy = 0;
    const auto n = double(samples.size());
    for (const Sample& sample : samples) {
        x += sample.unwraps;
        y += sample.bytes;
        xx += sample.unwraps * sample.unwraps;
        xy += sample.unwraps * sample.bytes;
    }
    return (n * xy - x * y) / (n * xx - x * x);
}

} // namespace

/// Replaces the C library's, for every library in the process.
extern "C" void* calloc(size_t count_of_elements, size_t size) {
    void* const block = __libc_calloc(count_of_elements, size);
    if (block && declared().is_counting)
        count(block);
    return block;
}

int main(int argc, char** argv) {
    const int unwraps = argc > 1 ? std::atoi(argv[1]) : 10000;
    static Silent silent;
    host::script::Session& session = host::script::Session::current();
    session.set_output(&silent);
    session.interpreter().script_path() = {TESSORA_SCRIPTS};
    host::graph::Plugins::current().search_path().push_back(TESSORA_PLUGINS);
    const int rounds = std::max(20, unwraps / k_unwraps_per_round);
    std::vector<Sample> samples;
    std::printf("unwraps,bytes in use,declared leaks,rest\n");
    for (int round = 1; round <= rounds; ++round) {
        run_round();
        if (round % std::max(1, rounds / 20) != 0)
            continue;
        const struct mallinfo2 memory = mallinfo2();
        const size_t used = memory.uordblks + memory.hblkhd;
        const double rest = double(used) - double(declared().bytes);
        std::printf("%d,%zu,%zu,%.0f\n", round * k_unwraps_per_round, used, declared().bytes, rest);
        std::fflush(stdout);
        if (round > rounds / 10) // caches fill at first
            samples.push_back({double(round * k_unwraps_per_round), rest});
    }
    for (size_t i = 0; i < k_functions; ++i)
        std::printf("%s: %zu blocks\n", k_leaking_functions[i], declared().blocks[i]);
    const double growth = slope(samples);
    std::printf("slope: %.1f bytes per unwrap\n", growth);
    return growth < k_max_slope && declared().blocks[0] > 0 ? 0 : 1;
}
