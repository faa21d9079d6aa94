#include <csignal>
#include <cstdarg>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "DocumentScope.h"
#include "Files.h"
#include "Json.h"
#include "Processes.h"
#include "Support.h"
#include "Tree.h"

namespace {

/* Faults injected into the system calls below. */
struct {
    bool hasUnnamedFiles = true;
    int signalAtMode = 0, signalAtRename = 0;
} faults;

} // namespace

/* Replace those of the C library. */
extern "C" int open(const char* const path, const int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    if ((flags & O_TMPFILE) == O_TMPFILE && !faults.hasUnnamedFiles) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return int(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

extern "C" int fchmod(const int file, const mode_t mode) noexcept {
    raise(faults.signalAtMode);
    return int(syscall(SYS_fchmod, file, mode));
}

extern "C" int rename(const char* const from, const char* const to) noexcept {
    raise(faults.signalAtRename);
    return int(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

namespace VespermoorEngine::Test {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

constexpr std::pair<const char*, const char*> files[]{
    {"scene.json",
     "{\"name\": \"Attic\", \"open\": true, \"scale\": 1.2399,\n \"parts\": [{\"id\": 7}]}\n"},
    {"more.json", "{\"name\": \"Cellar\", \"depth\": 2.5}"},
    {"numbers.json", "[0, 0.30000000000000004, 1e23, -0, -0.0, 1e-400, 1.0, 5e-324, 1e21, 1e22, "
                     "18446744073709551615, -9223372036854775808, 0.000001, "
                     "2.2250738585072011e-308, 1.7976931348623157e308, -123456789012345.67]"},
    {"good.tmpl", "{{ name }}: {{ depth }}{{ if open }} (open){{ end }}\n"},
    {"undefined.tmpl", "text {{ no.such.name }}\n"},
    {"syntax.tmpl", "text {{ name\n"},
    {"lines", "one\nTwo two\n\nno newline tWO"},
    {"line", "Two"},
    {"[b]", "{\"depth\": 1.5}"},
    {"log", "old\n"},
};

struct Row {
    const char *arguments, *printed;
};

/* The current directory is a temporary one with these files. */
class HostCommandTest : public testing::Test {
protected:
    HostCommandTest() {
        for (const auto& [name, content] : files) {
            writeFile(directory / name, content);
        }
        writeFile(directory / "deep.json", std::string(1024, '[') + "{}" + std::string(1024, ']'));
        makeTree(directory.path(), {"loop -> loop"});
    }

    /* Both outputs of the program and its exit code. The shell parses the arguments, which may
       contain further commands. */
    static std::string run(const std::string& arguments, const std::string& before = "") {
        return outputOf("exec 2>&1; " + before + VESPERMOOR_PROGRAM + " " + arguments +
                        "\necho exit $?");
    }

    const TemporaryDirectory directory;
    const ScopedCurrentDirectory current{directory.path()};
};

TEST_F(HostCommandTest, Prints) {
    const Row rows[]{
        {"json more.json", "{\n    \"name\": \"Cellar\",\n    \"depth\": 2.5\n}\n"},
        {"json - < more.json --indent 1", "{\n \"name\": \"Cellar\",\n \"depth\": 2.5\n}\n"},
        {"json scene.json --pointer /parts/0/id", "7\n"},
        {"json scene.json --pointer /scale --decimals 2", "1.23\n"},
        {"json scene.json --pointer /name --raw", "Attic\n"},
        {"json scene.json --pointer /parts --raw --compact", "[{\"id\":7}]\n"},
        {"json numbers.json --compact",
         "[0,0.30000000000000004,1e23,-0,-0.0,0.0,1.0,5e-324,1e21,1e22,"
         "18446744073709551615,-9223372036854775808,0.000001,"
         "2.225073858507201e-308,1.7976931348623157e308,-123456789012345.67]\n"},
        {"json --set /a/b~1c=null more.json --pointer /a", "{\n    \"b/c\": null\n}\n"},
        {"json more.json --set /x=null --set /x/y/z=0.1 --pointer /x/y/z", "0.1\n"},
        {"json more.json --set '#/name%00x=1' --pointer /name", "\"Cellar\"\n"},
        {"json more.json --set /x='[-0, 9007199254740993, {\"f\": 0.1}]' --compact --pointer /x",
         "[-0,9007199254740993,{\"f\":0.1}]\n"},
        {"json more.json --set /a=[1,2] --set /a/-=[0.5] --set /a/3='[\"x\"]' "
         "--set /a/-/b=7 --set /a/-=[1,0.1] --compact --pointer /a",
         "[1,2,[0.5],[\"x\"],{\"b\":7},[1,0.1]]\n"},
        {"json more.json --set /a=1 --set-string /a='x\"=' --set /b=2 --delete /b "
         "--delete /name --compact",
         "{\"depth\":2.5,\"a\":\"x\\\"=\"}\n"},
        {"json numbers.json --set '=[1,2,3]' --delete /1 --compact", "[1,3]\n"},
        {"json more.json --set $(printf '/a%.0s' $(seq 1023))=[] --compact | wc -c", "6169\n"},
        {"render good.tmpl --data scene.json more.json", "Attic: 2.5000 (open)\n"},
        {"render - --data more.json --data scene.json < good.tmpl", "Cellar: 2.5000 (open)\n"},
        {"render good.tmpl --data [b] - --output - < scene.json", "Attic: 1.5000 (open)\n"},
        {"json more.json --pointer /depth --output made; cat made", "2.5\n"},
        {"json more.json --pointer /depth --output /dev/stdout >> log; cat log", "old\n2.5\n"},
        {"json more.json --pointer /depth --output /dev/fd/3 3>> log; wc -l < log", "3\n"},
        {"json more.json --set /a=1 --output /proc/thread-self/fd/1 > /dev/null", ""},
        {"tags scene.json --region [{ }] /dev/null --region '{\"n' op line",
         "{\"nTwoopen\": true, \"scale\": 1.2399,\n \"parts\": [{}]}\n"},
        {"case kebab XMLParser fooBar", "xml-parser\nfoo-bar\n"},
        {"case camel my-3d-model ab", "My3dModel\nAb\n"},
        {"--version | grep -c '^vespermoor-utils [0-9.]*$'", "1\n"},
        {"--help | grep '^  vespermoor-utils json'",
         "  vespermoor-utils json FILE --pointer POINTER\n"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(run(row.arguments), row.printed + "exit 0\n"s) << row.arguments;
    }
}

TEST_F(HostCommandTest, ReportsFailuresInOneLine) {
    const Row rows[]{
        {"json none.json", "none.json: No such file or directory"},
        {"json \"$(printf 'no\\n\\033\\233ne\\302\\233\\342\\200\\256\\330\\234.json')\"",
         "no\\x0a\\x1b\\x9bne\\xc2\\x9b\\xe2\\x80\\xae\\xd8\\x9c.json: No such file or directory"},
        {"json $(printf 'n\\344me\\303\\244.json')", "n\xe4meä.json: No such file or directory"},
        {"json /", "/: Is a directory"},
        {"json more.json --output $(echo loop)", "loop: Too many levels of symbolic links"},
        {"json more.json > /dev/full", "standard output: No space left on device"},
        {"json deep.json", "deep.json:1:1025: Nested deeper than 1024 levels"},
        {"json scene.json --pointer /parts/1", "scene.json: Nothing at /parts/1"},
        {"json more.json --pointer '#/name%00x'", "more.json: Nothing at #/name%00x"},
        {"json scene.json --delete /parts/1", "--delete: Nothing at /parts/1"},
        {"json more.json --set /name/first=1", "--set: Nothing can be made at /name/first"},
        {"json more.json --set /a=[1] --set /a/00=1", "--set: Nothing can be made at /a/00"},
        {"json more.json --set /a=[1] --set /a/2=1", "--set: Nothing can be made at /a/2"},
        {"json more.json --set /a=[1] --set /a/b=1", "--set: Nothing can be made at /a/b"},
        {"json more.json --set /name=Loft",
         "--set /name:1:1: Invalid value; strings need quotes: --set '/name=\"Loft\"' or "
         "--set-string"},
        {"json more.json --set /a=[1",
         "--set /a:1:3: Missing a comma or ']' after an array element"},
        {"json more.json --set $(printf '/a%.0s' $(seq 1024))=[]",
         "--set: Nested deeper than 1024 levels"},
        {"render undefined.tmpl --data more.json",
         "undefined.tmpl:1:6: Undefined name no.such.name"},
        {"render syntax.tmpl --data more.json",
         "syntax.tmpl:1:6: Syntax error: Unterminated template directive"},
        {"render line --data more.json --output none/x", "none/x: No such file or directory"},
        {"render line --data more.json --output /dev/full", "/dev/full: No space left on device"},
        {"tags good.tmpl --region {{ nowhere line", "good.tmpl: missing tag 'nowhere'"},
        {"tags good.tmpl --region name open line --region depth end line",
         "good.tmpl: overlapping tags: 'open' should appear before 'depth'"},
        {"tags good.tmpl --region a b none", "none: No such file or directory"},
        {"tags line --region %% [/a] line", "line: missing tag '%%'"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(run(row.arguments), "vespermoor-utils: "s + row.printed + "\nexit 1\n");
    }
#ifdef __SANITIZE_ADDRESS__
    const std::string limit =
        "export ASAN_OPTIONS=max_allocation_size_mb=100:allocator_may_return_null=1; ";
#else
    /* Skipped with the sanitizer, where growing the memory takes half a minute. */
    EXPECT_EQ(run("json /dev/zero"), "vespermoor-utils: /dev/zero: is longer than 2 GiB\nexit 1\n");
    const std::string limit = "ulimit -v 200000; ";
#endif
    EXPECT_THAT(run("json /dev/zero", limit),
                testing::EndsWith("vespermoor-utils: Cannot allocate memory\nexit 1\n"));
}

/* A document on standard input, as an argument of the shell's printf. */
TEST_F(HostCommandTest, ReportsErrorsInADocument) {
    const Row rows[]{
        {"{\\n \"a\" 1}", "2:6: Missing a colon after a name of object member"},
        {"\\357\\273\\277{", "1:2: Missing a name for object member"},
        {"\\357\\273[]", "1:1: Invalid value"},
        {"[]\\000", "1:3: The document root must not be followed by other values"},
        {"[\"a\\nb\"]", "1:4: A control character in a string must be escaped"},
        {"\\n]", "2:1: Unexpected character ]"},
        {" ", "1:2: The document is empty"},
        {"[1,\\n18446744073709551616]", "2:1: The integer is not between -2^63 and 2^64 - 1"},
        {" -9223372036854775809", "1:2: The integer is not between -2^63 and 2^64 - 1"},
        {"[8324234798232463278461.5e300]", "1:2: Number too big to be stored in double"},
        {"[\"\\\\ud7ff\\\\ud83d\\\\ude00\\\\udFaa\", ]",
         "1:21: The surrogate pair in string is invalid"},
        {"[\"\\\\ud800\"]", "1:3: The surrogate pair in string is invalid"},
    };
    for (const Row& row : rows) {
        const std::string given = "printf '"s + row.arguments + "' | ";
        const std::string expected = "standard input:"s + row.printed + "\nexit 1\n";
        EXPECT_EQ(run("json -", given), "vespermoor-utils: " + expected);
    }
    for (const std::string json : {"\\357\\273[]", "[8324234798232463278461.5e300]"}) {
        EXPECT_THAT(run("render line --data -", "printf '" + json + "' | "),
                    testing::EndsWith("exit 1\n"));
    }
    EXPECT_EQ(run("render line --data -", "printf 18446744073709551616 | "), "Twoexit 0\n");
}

/* Characters of two bytes. */
std::string letters(const int count) {
    std::string text;
    for (int i = 0; i != count; ++i) {
        text += "é";
    }
    return text;
}

TEST_F(HostCommandTest, Searches) {
    makeTree(directory.path(), {"d/.h/Two", "d/link -> ../lines", "d/up -> ..", "link -> d"});
    outputOf("mkfifo d/fifo");
    writeFile("./aaa", "aaa\r\n");
    writeFile("d/a\nb", "\x1b[1m\ttwo");
    writeFile("d/binary", "two" + std::string(8188, 'x') + '\0');
    writeFile("d/text", std::string(8192, '\n') + "two\0"s);
    writeFile("./long", letters(500) + "<two>_" + letters(500) + "end\n" + std::string(300, '+'));
    const std::pair<const char*, std::string> rows[]{
        {"two lines aaa d/.h/Two", "lines:2:1: Two two\nd/.h/Two:1:6: d/.h/Two\nexit 0\n"},
        {"--all two lines",
         "lines:2:1: Two two\nlines:2:5: Two two\nlines:4:12: no newline tWO\nexit 0\n"},
        {"--all aa aaa", "aaa:1:1: aaa\nexit 0\n"},
        {"'TWO\n\nN' lines", "lines:2:5: Two two\nexit 0\n"},
        {"two d", "d/.h/Two:1:6: d/.h/Two\nd/a\\x0ab:1:6: \x1b[1m\ttwo\nd/text:8193:1: two" +
                      "\0\nexit 0\n"s},
        {"h/t link", "link/.h/Two:1:4: d/.h/Two\nexit 0\n"},
        {"'<TWO>_' long", "long:1:1001: " + letters(48) + "<two>_" + letters(48) + "\nexit 0\n"},
        {"END long", "long:1:2007: " + letters(98) + "end\nexit 0\n"},
        {"$(printf %0201d | tr 0 +) long", "long:2:1: " + std::string(200, '+') + "\nexit 0\n"},
        {"two - < lines", "standard input:2:1: Two two\nexit 0\n"},
        {"three d lines", "exit 1\n"},
        {"three none", "vespermoor-utils: none: No such file or directory\nexit 2\n"},
        {"two d/fifo & exec cat lines > d/fifo", "d/fifo:2:1: Two two\n"},
        {"two lines none d/.h/Two", "lines:2:1: Two two\nvespermoor-utils: none: No such file or "
                                    "directory\nd/.h/Two:1:6: d/.h/Two\nexit 2\n"},
    };
    for (const auto& [arguments, printed] : rows) {
        EXPECT_EQ(run("search "s + arguments), printed);
    }
    /* On a terminal there are colours, but no other escape codes. */
    writeFile("./f", "\x1b[1m\tTwo\r\n");
    EXPECT_EQ(
        outputOf("TERM=xterm script -qec \"'" VESPERMOOR_PROGRAM "' search two f\" /dev/null"),
        "\x1b[35mf\x1b[m:\x1b[32m1\x1b[m:6: \\x1b[1m\t\x1b[31mTwo\x1b[m\r\n");
}

TEST_F(HostCommandTest, WrongUsage) {
    const Row rows[]{
        {"jsno more.json", "Unknown command jsno; did you mean json?"},
        {"gen", "Unknown command gen; did you mean generate?"},
        {"--nonsense", "Unknown option --nonsense"},
        {"case x y", "STYLE: x not in {kebab,camel}"},
        {"json more.json --output ''", "--output: the name is empty"},
        {"json more.json --pointer parts", "--pointer: parts is no JSON Pointer"},
        {"json more.json --set /name", "--set: /name has no equals sign"},
        {"json more.json --set name=1", "--set: name is no JSON Pointer"},
        {"json more.json --delete ''", "--delete: the root cannot be deleted"},
        {"json more.json --delete parts", "--delete: parts is no JSON Pointer"},
        {"render - --data -", "-: standard input can be read only once"},
        {"search '' lines", "TEXT: the text is empty"},
        {"watch . --exec ';'",
         "--exec: expects a program, its arguments, and a ';', which the shell takes in quotes"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(run(row.arguments), "vespermoor-utils: "s + row.printed +
                                          "\nRun with --help for more information.\nexit 2\n");
    }
}

TEST(DocumentScopeTest, FollowsPaths) {
    rapidjson::Document document =
        parse(R"({"": {"x": "below"}, "a/b": "", "step/two": "", "longer/one": "",
        "list": ["first", {"item10": "ten", "item1": "a", "item2": "b", "atem2": "c"}]})");
    const std::pair<const char*, const char*> rows[]{
        {"/x", "below"},     {"list/0", "first"},   {"list/1/item2", "b"},    {"list/2", nullptr},
        {"list/-", nullptr}, {"list/+0", nullptr},  {"list/00", nullptr},     {"list/0x", nullptr},
        {"list/", nullptr},  {"list/0/x", nullptr}, {"list/1/item", nullptr}, {"a/b", nullptr},
        {"x/y", nullptr},    {"step/two", nullptr}, {"longer/one", nullptr},  {"list/1/item1", "a"},
    };
    for (const auto& [path, expected] : rows) {
        auto place = Host::DocumentScope{document}.member(path);
        EXPECT_EQ(place->exists(), expected != nullptr) << path;
        EXPECT_EQ(text(place->asString()), expected ? expected : "") << path;
    }
    /* Missing steps are created one after another. */
    Host::DocumentScope{document}.member("new")->member("n1/n2")->mutableValue().SetInt(7);
    EXPECT_EQ(compact(document["new"]), R"({"n1":{"n2":7}})");
}

/* The real program, copied into a tree like that of an installation; @ is its root. */
TEST_F(HostCommandTest, FindsTheDataRoot) {
    makeTree(directory.path(), {"bin/", "elsewhere/shaders/"});
    fs::copy_file(VESPERMOOR_PROGRAM, "bin/program");
    fs::create_directory_symlink(fs::path{VESPERMOOR_PROGRAM}.parent_path() / "../lib", "lib");
    const std::string none =
        ": no data root: no directory from here upwards has an entry shaders, and there is "
        "no ../share/vespermoorengine\nexit 1\n";
    const struct {
        const char *made, *start;
        std::string expected;
    } rows[]{
        {"", "", "vespermoor-utils: @/bin" + none},
        {"", "'@/elsewhere/bin'", "data root: @/elsewhere\nexit 0\n"},
        {"", "elsewhere/bin/", "data root: @/elsewhere\nexit 0\n"},
        {"share/vespermoorengine", "", "data root: @/share/vespermoorengine\nexit 0\n"},
        {"shaders", "''", "data root: @\nexit 0\n"},
    };
    for (const auto& row : rows) {
        fs::create_directories(directory / row.made);
        const std::string command = "bin/program root "s + row.start + " 2>&1; echo \"exit $?\"";
        EXPECT_EQ(directory.shortened(outputOf(directory.expanded(command))),
                  "executables: @/bin\n" + row.expected);
    }
}

TEST(HostFilesTest, ReplaceKeepsOwnerAndPermissionsAndFollowsLinks) {
    const TemporaryDirectory directory;
    const std::string longName(255, 'x');
    makeTree(directory.path(), {"real", "link -> real", "dangling -> fresh"});
    const uid_t owner = geteuid() == 0 ? 7 : geteuid();
    ASSERT_EQ(chown((directory / "real").data(), owner, gid_t(-1)), 0);
    fs::permissions(directory / "real", fs::perms{0604});
    umask(007);
    for (const bool hasUnnamedFiles : {true, false}) {
        faults.hasUnnamedFiles = hasUnnamedFiles;
        for (const auto& [name, mode] :
             {std::pair{"link"s, 0604}, {"dangling"s, 0660}, {longName, 0660}}) {
            Host::replaceFile(directory / name, view(name));
            EXPECT_EQ(readFile(directory / name), name);
            EXPECT_EQ(int(fs::status(directory / name).permissions()), mode) << name;
        }
        struct stat status {};
        EXPECT_EQ(stat((directory / "real").data(), &status), 0);
        EXPECT_EQ(status.st_uid, owner);
        EXPECT_THAT(tree(directory.path()),
                    ElementsAre("dangling -> fresh", "fresh", "link -> real", "real", longName));
        fs::remove(directory / "fresh");
        fs::remove(directory / longName);
    }
    faults.hasUnnamedFiles = true;
}

TEST(HostFilesTest, WritesIntoAPipeByTheNameOfItsDescriptor) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    Host::replaceFile("/dev/fd/" + std::to_string(ends[1]), "new");
    char bytes[4]{};
    EXPECT_EQ(read(ends[0], bytes, sizeof(bytes)), 3);
    EXPECT_STREQ(bytes, "new");
    close(ends[0]);
    close(ends[1]);
}

/* The files left by a signal in the middle of a replacement. */
TEST(HostFilesTest, NoSignalLeavesATemporaryFile) {
    const struct {
        bool hasUnnamedFiles;
        int signalAtMode, signalAtRename;
        std::string content;
    } rows[]{
        {true, SIGTERM, 0, "file"},
        {true, 0, SIGTERM, "new"},
        {false, SIGTERM, 0, "new"},
        {false, 0, SIGHUP, "new"},
    };
    for (const auto& row : rows) {
        const TemporaryDirectory directory;
        makeTree(directory.path(), {"file"});
        ChildProcess child{[&] {
            std::signal(SIGHUP, SIG_DFL); // Ignored under nohup.
            faults = {row.hasUnnamedFiles, row.signalAtMode, row.signalAtRename};
            Host::replaceFile(directory / "file", "new");
            return ""s;
        }};
        EXPECT_EQ(child.stop({}), -1);
        EXPECT_THAT(tree(directory.path()), ElementsAre("file"));
        EXPECT_EQ(readFile(directory / "file"), row.content);
    }
}

TEST(HostFilesTest, ReplaceThatFailsLeavesTheOldFile) {
    const TemporaryDirectory directory;
    writeFile(directory / "file", "old");
    fs::permissions(directory.path(), fs::perms{0777});
    fs::permissions(directory / "file", fs::perms{0444});
    const auto failureOf = [&](const std::string& content) -> std::string {
        try {
            Host::replaceFile(directory / "file", view(content));
        } catch (const Host::Failure& failure) {
            return directory.shortened(failure.what());
        }
        return "";
    };
    EXPECT_EQ(unprivileged([&] { return failureOf("new") == "@/file: Permission denied"; }), 1);

    /* A limit on file sizes makes a write fail in the middle, like a full disk. */
    struct rlimit before {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const struct rlimit small { 4096, before.rlim_max };
    std::signal(SIGXFSZ, SIG_IGN);
    fs::permissions(directory / "file", fs::perms{0644});
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    for (const bool hasUnnamedFiles : {false, true}) {
        faults.hasUnnamedFiles = hasUnnamedFiles;
        EXPECT_EQ(failureOf(std::string(10000, 'x')), "@/file: File too large");
    }
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(readFile(directory / "file"), "old");
    EXPECT_THAT(tree(directory.path()), ElementsAre("file"));
}

} // namespace
} // namespace VespermoorEngine::Test
