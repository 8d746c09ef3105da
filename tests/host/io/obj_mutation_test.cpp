#include "tests/host/io/obj_properties.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

const char* const k_seeds[] = {
    "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvn 0 0 1\n"
    "f 1/1/1 2/2/1 3//1 4\nf 1 3 4\nl 1/1 2/2\n",
    "# comment\r\no box\r\nv 0 0 0 # a\r\nv 1e0 -0.5 +2\r\nv 1 1 1 1 0 0\r\nvt .5 .5 0\r\n"
    "usemtl m\r\nf -3/-1 -2/1/ \\\r\n -1//\r\nf 1 2\r\ns off\r\n",
    "f 1 2 3\rv 0 0 0\rv 1 0 0\rv 0 1 0\rsurf 0 1 0 1 1/1 2/1\r",
    "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt nan 1\nvt 1 2\nf 1/1 2/2 3/1 1/2 3/2 2\nfo 3 2 1\n",
};

/// Text inserted by mutations.
const std::string k_pieces[] = {"\n",    "\\\n", "/",
                                "//",    "-",    "f ",
                                "v ",    "vt ",  "#",
                                "0",     "1",    "4294967297",
                                "1e999", "nan",  " ",
                                "\t",    "\r",   std::string("\0", 1),
                                "l ",    "surf", "\xEF\xBB\xBF",
                                "1e-60", "+",    "vn 0 0 1\n"};

class Mutator {
public:
    explicit Mutator(uint32_t seed) : random_(seed) {}

    std::string mutated() {
        std::string text = k_seeds[below(std::size(k_seeds))];
        for (size_t n = 1 + below(3); n > 0; --n)
            change(text);
        return text;
    }

private:
    size_t below(size_t n) { return random_() % n; }

    void change(std::string& text) {
        const size_t at = below(text.size() + 1);
        switch (below(4)) {
        case 0:
            text.insert(at, k_pieces[below(std::size(k_pieces))]);
            break;
        case 1:
            text.erase(at, 1 + below(5));
            break;
        case 2:
            if (at < text.size())
                text[at] = static_cast<char>(random_());
            break;
        default: // copy a part to another place
            text.insert(at, text.substr(below(text.size() + 1), 1 + below(20)));
        }
    }

    std::mt19937 random_;
};

TEST(ObjMutation, MutatedFilesAreRejectedWithAMessageOrSurviveARoundTrip) {
    size_t accepted = 0;
    for (uint32_t seed = 0; seed < 40000; ++seed) {
        const std::string text = Mutator(seed).mutated();
        const std::string broken = test::check_obj_bytes(text);
        ASSERT_EQ("", broken) << "seed " << seed << "\n" << testing::PrintToString(text);
        host::ObjDocument document;
        host::IoError error;
        accepted += host::parse_obj("m.obj", text, document, error);
    }
    // Both outcomes must be frequent for the test to be meaningful.
    EXPECT_GT(accepted, 8000u);
    EXPECT_LT(accepted, 32000u);
}

} // namespace
