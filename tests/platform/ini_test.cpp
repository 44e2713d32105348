#include "platform/base/last_error.h"
#include "platform/registry/ini_profile.h"
#include "tests/support/child_process.h"
#include "tests/support/slow_build.h"
#include "tests/support/temporary_registry.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>
#include <random>

namespace {

using namespace std::string_literals;
namespace fs = std::filesystem;

class Ini : public testing::Test {
  protected:
    void put(const std::string& bytes) const { std::ofstream(file_, std::ios::binary) << bytes; }

    std::string bytes() const {
        std::ifstream stream(file_, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static std::string get(const char* section, const char* key, DWORD size = 4096) {
        std::string text(size, '?');
        const DWORD count =
            GetPrivateProfileStringA(section, key, "none  ", text.data(), size, "tool.ini");
        EXPECT_EQ(text.at(count), '\0');
        return text.substr(0, count);
    }

    static BOOL set(const char* section, const char* key, const char* value,
                    const char* file = "tool.ini") {
        return WritePrivateProfileStringA(section, key, value, file);
    }

    support::TemporaryRegistry registry_;
    const fs::path file_ = registry_.folder / "tool.ini";
};

std::string utf16(const std::string& ascii) {
    std::string bytes = "\xFF\xFE";
    for (const char c : ascii) {
        bytes += {c, '\0'};
    }
    return bytes;
}

TEST_F(Ini, ChangesLeaveEverythingElseAsItIs) {
    const struct {
        std::string before;
        const char *section, *key, *value;
        std::string after;
    } cases[] = {
        {"", "A", "k", "v", "[A]\r\nk=v\r\n"},
        {"; c", "A", "k", "v", "; c\r\n[A]\r\nk=v\r\n"},
        {"[a]\nK = old  \n[B]\n", " A ", " k ", " \"v\" ", "[a]\nK =  \"v\" \n[B]\n"},
        {"[A]\nx=1\n\n; of B\n[B]\n", "A", "k", "v", "[A]\nx=1\nk=v\n\n; of B\n[B]\n"},
        {"[A]\nk=1\nk=2\n[A]\nk=3", "A", "k", "v", "[A]\nk=v\nk=2\n[A]\nk=3"},
        {"k=0\n[A]\n;k=1\n#k=1", "A", "k", "v", "k=0\n[A]\n;k=1\n#k=1\nk=v\n"},
        {"[A]\nk=1\nx=2\n[A]\nK=3", "a", "k", nullptr, "[A]\nx=2\n[A]\n"},
        {"[A]\n;c\nx=1\n\n;of B\n[B]\ny=1\n[a]\n", "A", nullptr, nullptr, ";of B\n[B]\ny=1\n"},
        {"[B]\nk=1", "A", "k", nullptr, "[B]\nk=1"},
        {"\xEF\xBB\xBF[A]\nk=1\n", "A", "k", "v", "\xEF\xBB\xBF[A]\nk=v\n"},
        {utf16("[A]\r\nk=1\r\n") + "\xD8\xDC\xD9!?", "A", "k", "\xF0\x9D\x84\x9E\xFF",
         utf16("[A]\r\nk=") + "\x34\xD8\x1E\xDD\xFD\xFF\r\0\n\0"s + "\xD8\xDC\xD9!?"},
    };

    for (const auto& [before, section, key, value, after] : cases) {
        put(before);
        EXPECT_TRUE(set(section, key, value)) << before;
        EXPECT_EQ(bytes(), after);
    }
    EXPECT_EQ(get("A", "k"), "\xF0\x9D\x84\x9E\xEF\xBF\xBD");
    for (const char* wrong : {"a=b", "[k", ";k", "k\nx"}) {
        EXPECT_FALSE(set("A", wrong, "v"));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    EXPECT_FALSE(set("A]", "k", "v") || set("A", "k", "v\rx") || set(nullptr, nullptr, nullptr));
}

TEST_F(Ini, ValuesListsAndNumbersAreRead) {
    put("k=0\n[ One ]x\nK =\t' a \" '\t\r\nk=2\n;c=3\n#d=4;x\nempty=\n\"q\"=\"\nno\nz\0=1\n"s +
        "[two]\na=102abc\nb=-5\nc=0x1Fg\nd=x\ne=4294967297\n[ONE]\nlate=1\n");
    EXPECT_EQ(get("one ", " k"), " a \" ");
    EXPECT_EQ(get("ONE", "#d") + get("one", "empty") + get("one", "\"q\""), "4;x\"");
    EXPECT_EQ(get("one", ";c") + get("one", "late") + get("three", "k"), "nonenonenone");
    EXPECT_EQ(get("two", "a", 4), "102");
    EXPECT_EQ(get("one", nullptr), "K\0#d\0empty\0\"q\"\0"s);
    EXPECT_EQ(get(nullptr, nullptr, 9), "One\0two\0"s);
    EXPECT_EQ(get(nullptr, nullptr, 8), "One\0tw"s); // and two zeros
    EXPECT_EQ(get("three", nullptr), "none");
    const std::pair<const char*, int> numbers[] = {{"a", 102}, {"b", -5}, {"c", 31},
                                                   {"d", 0},   {"e", 1},  {"f", 7}};
    for (const auto& [key, number] : numbers) {
        EXPECT_EQ(static_cast<int>(GetPrivateProfileIntA("two", key, 7, file_.c_str())), number);
    }
    for (int i = 100; i < 300; ++i) { // seen at once, whoever wrote it
        put("[two]\na=" + std::to_string(i));
        ASSERT_EQ(get("two", "a"), std::to_string(i));
    }
}

TEST_F(Ini, RubbishAndLargeFilesSurvive) {
    std::string rubbish;
    std::mt19937 random(1);
    while (rubbish.size() < 10'000'000 / support::slow_build_divisor) {
        rubbish += static_cast<char>(random());
    }
    for (const std::string mark : {"", "\xFF\xFE"}) {
        put(mark + rubbish);
        EXPECT_TRUE(set("Tool", "k", "v"));
        EXPECT_EQ(get("tool", "K"), "v");
        EXPECT_TRUE(set("Tool", nullptr, nullptr));
        EXPECT_EQ(bytes().substr(0, mark.size() + rubbish.size()), mark + rubbish);
    }
}

TEST_F(Ini, LinksPermissionsAndRightsAreRespected) {
    fs::create_symlink("real.ini", file_);
    EXPECT_TRUE(set("A", "k", "1")); // makes what the link names
    fs::permissions(file_, fs::perms(0640));
    EXPECT_TRUE(set("A", "k", "2"));
    EXPECT_TRUE(fs::is_symlink(file_));
    EXPECT_EQ(fs::status(registry_.folder / "real.ini").permissions(), fs::perms(0640));

    EXPECT_FALSE(set("A", "k", "v", (registry_.folder / "missing" / "x.ini").c_str()));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    fs::permissions(registry_.folder, fs::perms(0777));
    fs::permissions(file_, fs::perms(0444));
    support::as_nobody([] {
        EXPECT_EQ(get("A", "k"), "2");
        EXPECT_FALSE(set("A", "k", "3"));
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
        EXPECT_TRUE(set("A", "k", "3", "other.ini"));
    });
    const int folder = ::open(registry_.folder.c_str(), O_RDONLY);
    ::flock(folder, LOCK_EX);
    EXPECT_FALSE(set("A", "k", "4"));
    EXPECT_EQ(GetLastError(), ERROR_BUSY);
    ::close(folder);
}

TEST_F(Ini, WritersAtATimeLoseNothing) {
    constexpr int each = 50;
    const auto write = [](const char* section) {
        for (int i = 0; i < each; ++i) {
            EXPECT_TRUE(set(section, std::to_string(i).c_str(), "v"));
        }
    };
    const pid_t first = support::start_child([&] { write("first"); });
    const pid_t second = support::start_child([&] { write("second"); });
    write("third");
    EXPECT_TRUE(support::ended_well(first) & support::ended_well(second));
    for (const char* section : {"first", "second", "third"}) {
        const std::string keys = get(section, nullptr);
        EXPECT_EQ(std::count(keys.begin(), keys.end(), '\0'), each);
    }
}

TEST_F(Ini, AKilledWriterLeavesTheOldFileOrTheNewOne) {
    std::mt19937 random(1);
    const std::string tail(30'000, 'x');
    for (int round = 0; round < 200 / support::slow_build_divisor; ++round) {
        int line[2];
        ASSERT_EQ(::pipe2(line, O_CLOEXEC), 0);
        const pid_t writer = support::start_child([&] {
            for (unsigned count = 0;; ++count) {
                set("A", "k", (std::string(1 + count % 40, 'n') + tail).c_str());
                EXPECT_EQ(::write(line[1], "!", 1), 1);
            }
        });
        ::close(line[1]);
        char reported = 0;
        for (auto left = 1 + random() % 3; left; --left) {
            ASSERT_EQ(::read(line[0], &reported, 1), 1);
        }
        ::usleep(static_cast<useconds_t>(random() % 1'000));
        ::kill(writer, SIGKILL);
        EXPECT_FALSE(support::ended_well(writer));
        ::close(line[0]);
        ASSERT_TRUE(bytes().starts_with("[A]\r\nk=n") && bytes().ends_with(tail + "\r\n")) << round;
    }
    EXPECT_TRUE(set("A", "k", "v"));
    const auto files = fs::directory_iterator(registry_.folder);
    EXPECT_EQ(std::distance(begin(files), fs::directory_iterator()), 1); // nothing lies about
}

} // namespace
