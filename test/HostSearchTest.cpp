#include "Program.h"
#include "Support.h"
#include "Tree.h"

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;

struct Row {
    const char* name;
    /* Arguments, quoted for the shell. */
    const char* arguments;
    int exitCode;
    /* Standard output and standard error. */
    std::string printed;
};

/* Characters of two bytes. */
std::string letters(const int count) {
    std::string text;
    for (int i = 0; i != count; ++i) {
        text += "é";
    }
    return text;
}

class HostSearchRow : public testing::TestWithParam<Row> {};

TEST_P(HostSearchRow, Prints) {
    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
    makeTree(directory.path(), {"d/.h/Two", "d/link -> ../lines", "d/up -> ..", "link -> d"});
    outputOf("mkfifo d/fifo");
    writeFile("./lines", "one\nTwo two\n\nno newline tWO");
    writeFile("./aaa", "aaa\r\n");
    writeFile("d/a\nb", "\x1b[1m\ttwo");
    writeFile("d/binary", "two" + std::string(8188, 'x') + '\0');
    writeFile("d/text", std::string(8192, '\n') + "two\0"s);
    writeFile("./long", letters(500) + "<two>_" + letters(500) + "end\n" + std::string(300, '+'));
    const auto& [name, arguments, exitCode, printed] = GetParam();
    EXPECT_EQ(outputOf("'" VESPERMOOR_PROGRAM "' search "s + arguments + " 2>&1; echo -n \" $?\""),
              printed + ' ' + std::to_string(exitCode));
}

const Row rows[]{
    {"FirstOfEachFile", "two lines aaa d/.h/Two", 0,
     "lines:2:1: Two two\nd/.h/Two:1:6: d/.h/Two\n"},
    {"All", "--all two lines", 0,
     "lines:2:1: Two two\nlines:2:5: Two two\nlines:4:12: no newline tWO\n"},
    {"WithoutOverlap", "--all aa aaa", 0, "aaa:1:1: aaa\n"},
    {"AcrossLines", "'TWO\n\nN' lines", 0, "lines:2:5: Two two\n"},
    {"Directories", "two d", 0,
     "d/.h/Two:1:6: d/.h/Two\nd/a\\x0ab:1:6: \x1b[1m\ttwo\nd/text:8193:1: two" + "\0\n"s},
    {"LinkToADirectory", "h/t link", 0, "link/.h/Two:1:4: d/.h/Two\n"},
    {"Excerpt", "'<TWO>_' long", 0, "long:1:1001: " + letters(48) + "<two>_" + letters(48) + '\n'},
    {"ExcerptAtTheEnd", "END long", 0, "long:1:2007: " + letters(98) + "end\n"},
    {"ExcerptOfALongMatch", "$(printf %0201d | tr 0 +) long", 0,
     "long:2:1: " + std::string(200, '+') + '\n'},
    {"StandardInput", "two - < lines", 0, "standard input:2:1: Two two\n"},
    {"Nothing", "three d lines", 1, ""},
    {"GoesOn", "two none lines", 2,
     "vespermoor-utils: none: No such file or directory\nlines:2:1: Two two\n"},
    {"EmptyText", "'' lines", 2,
     "vespermoor-utils: TEXT: the text is empty\nRun with --help for more information.\n"},
};

INSTANTIATE_TEST_SUITE_P(Rows, HostSearchRow, testing::ValuesIn(rows), rowName<Row>);

/* Colours, and no other codes. */
TEST(HostSearch, OnATerminal) {
    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
    writeFile("./f", "\x1b[1m\tTwo\r\n");
    const ScopedVariable terminal{"TERM", "xterm"};
    const std::string command = "script -qec \"'" VESPERMOOR_PROGRAM "' search two f\" /dev/null";
    EXPECT_EQ(outputOf(command),
              "\x1b[35mf\x1b[m:\x1b[32m1\x1b[m:6: \\x1b[1m\t\x1b[31mTwo\x1b[m\r\n");
}

} // namespace
} // namespace VespermoorEngine::Test
