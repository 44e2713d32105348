#include "platform/companions/registry_key.h"
#include "platform/registry/registry.h"
#include "tests/support/reports.h"
#include "tests/support/slow_build.h"
#include "tests/support/temporary_registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <functional>
#include <random>
#include <thread>

namespace {

using namespace std::string_literals;

constexpr REGSAM read_write = KEY_READ | KEY_WRITE;
const char* const tool_key = "Software\\Maker\\Tool";

/// An open key that closes itself; null with `error` when it could not be had.
struct Key {
    HKEY handle = nullptr;
    DWORD error = 0;
    DWORD disposition = 0;

    Key() = default;
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    ~Key() {
        if (handle) {
            EXPECT_EQ(RegCloseKey(handle), 0);
        }
    }
};

struct Opened : Key {
    Opened(HKEY parent, const char* sub, REGSAM access = read_write) {
        error = static_cast<DWORD>(RegOpenKeyExA(parent, sub, 0, access, &handle));
    }
};

struct Created : Key {
    Created(HKEY parent, const char* sub, REGSAM access = read_write) {
        error = static_cast<DWORD>(
            RegCreateKeyExA(parent, sub, 0, nullptr, 0, access, nullptr, &handle, &disposition));
    }
};

DWORD set(HKEY key, const char* name, DWORD type, const std::string& bytes) {
    return static_cast<DWORD>(RegSetValueExA(key, name, 0, type,
                                             reinterpret_cast<const BYTE*>(bytes.data()),
                                             static_cast<DWORD>(bytes.size())));
}

DWORD remove(HKEY key, const char* sub) {
    return static_cast<DWORD>(RegDeleteKeyA(key, sub));
}

/// "type:bytes" of a value, or "error:number".
std::string get(HKEY key, const char* name) {
    DWORD type = 0;
    DWORD size = 100;
    std::string bytes(size, '\0');
    const LONG error =
        RegQueryValueExA(key, name, nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()), &size);
    return error ? "error:" + std::to_string(error)
                 : std::to_string(type) + ":" + bytes.substr(0, size);
}

/// The names that `enumerate` gives, joined; ends with the error that ended it.
template <typename Enumerate>
std::string names(HKEY key, Enumerate enumerate) {
    std::string all;
    for (DWORD index = 0;; ++index) {
        char name[20];
        DWORD length = sizeof(name);
        if (const LONG error =
                enumerate(key, index, name, &length, nullptr, nullptr, nullptr, nullptr)) {
            return all + std::to_string(error);
        }
        all += std::string(name, length) + " ";
    }
}

std::string keys_below(HKEY key) {
    return names(key, RegEnumKeyExA);
}

std::string values_of(HKEY key) {
    return names(key, RegEnumValueA);
}

/// Runs `work` in a child process; its result is the exit code. Never returns to the test there.
pid_t start(const std::function<int()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(work());
    }
    return child;
}

int exit_code(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class Registry : public testing::Test {
  protected:
    support::TemporaryRegistry registry_;
};

TEST_F(Registry, KeysAreMadeWithAllTheirLevelsAndFoundInAnyCase) {
    Created made(HKEY_CURRENT_USER, tool_key);
    EXPECT_EQ(made.error, ERROR_SUCCESS);
    EXPECT_EQ(made.disposition, REG_CREATED_NEW_KEY);
    Created again(HKEY_CURRENT_USER, "SOFTWARE\\maker\\TOOL\\");
    EXPECT_EQ(again.disposition, REG_OPENED_EXISTING_KEY);
    EXPECT_NE(again.handle, made.handle);

    EXPECT_EQ(set(made.handle, "Port", REG_SZ, "COM1:"), ERROR_SUCCESS);
    Opened opened(HKEY_CURRENT_USER, "software\\MAKER\\tool", KEY_READ);
    EXPECT_EQ(get(opened.handle, "PORT"), "1:COM1:");
    Opened maker(HKEY_CURRENT_USER, "Software\\Maker");
    Opened same(maker.handle, "");
    EXPECT_EQ(keys_below(same.handle), "Tool 259"); // the first spelling

    EXPECT_EQ(Opened(maker.handle, "Other\\Tool").error, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Opened(HKEY_CLASSES_ROOT, "Software").error, ERROR_INVALID_HANDLE);
    EXPECT_EQ(Created(maker.handle, nullptr).error, ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Created(HKEY_LOCAL_MACHINE, "Maker\\Tool").error, ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Created(HKEY_LOCAL_MACHINE, "SOFTWARE\\Maker\\Other").error, ERROR_SUCCESS);
    EXPECT_EQ(Opened(HKEY_CURRENT_USER, "Software\\Maker\\Other").error, ERROR_FILE_NOT_FOUND);
}

TEST_F(Registry, ValuesKeepTheirBytesTypesAndFirstNames) {
    Created key(HKEY_CURRENT_USER, tool_key);
    const std::string bytes("a\0\xFF\n", 4);
    EXPECT_EQ(set(key.handle, "Block", REG_BINARY, bytes), ERROR_SUCCESS);
    EXPECT_EQ(get(key.handle, "Block"), "3:" + bytes);
    EXPECT_EQ(set(key.handle, "BLOCK", REG_SZ, "no zero"), ERROR_SUCCESS);
    EXPECT_EQ(get(key.handle, "Block"), "1:no zero");
    EXPECT_EQ(set(key.handle, "Empty", REG_BINARY, ""), ERROR_SUCCESS);
    EXPECT_EQ(get(key.handle, "Empty"), "3:");
    EXPECT_EQ(set(key.handle, nullptr, REG_DWORD, "1234"), ERROR_SUCCESS);
    EXPECT_EQ(get(key.handle, ""), "4:1234");
    EXPECT_EQ(values_of(key.handle), " Block Empty 259");

    EXPECT_EQ(RegDeleteValueA(key.handle, "block"), 0);
    EXPECT_EQ(RegDeleteValueA(key.handle, "block"), 2);
    EXPECT_EQ(get(key.handle, "Block"), "error:2");
}

TEST_F(Registry, SizesAreToldBeforeAndInsteadOfTheBytes) {
    Created key(HKEY_CURRENT_USER, tool_key);
    set(key.handle, "Text", REG_SZ, "12345"s + '\0');
    DWORD type = 0;
    DWORD size = 1;
    EXPECT_EQ(RegQueryValueExA(key.handle, "Text", nullptr, &type, nullptr, &size), 0);
    EXPECT_EQ(size, 6U);
    BYTE data[6];
    size = 5;
    EXPECT_EQ(RegQueryValueExA(key.handle, "Text", nullptr, nullptr, data, &size), 234);
    EXPECT_EQ(size, 6U);
    EXPECT_EQ(RegQueryValueExA(key.handle, "Text", nullptr, nullptr, data, nullptr), 87);

    char name[5];
    DWORD length = 4; // no room for the zero
    EXPECT_EQ(RegEnumValueA(key.handle, 0, name, &length, nullptr, nullptr, nullptr, nullptr), 234);
    length = 5;
    EXPECT_EQ(RegEnumValueA(key.handle, 0, name, &length, nullptr, &type, data, &size), 0);
    EXPECT_EQ(std::string(name) + reinterpret_cast<const char*>(data), "Text12345");
}

TEST_F(Registry, ADeletedKeyIsGoneForTheHandlesThatAreOpen) {
    Created key(HKEY_CURRENT_USER, tool_key);
    Created below(key.handle, "Below");
    set(key.handle, "Value", REG_SZ, "old");
    EXPECT_EQ(remove(HKEY_CURRENT_USER, tool_key), ERROR_ACCESS_DENIED); // a key is below it
    EXPECT_EQ(remove(key.handle, "Below"), ERROR_SUCCESS);
    EXPECT_EQ(remove(key.handle, "Below"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(remove(key.handle, ""), ERROR_SUCCESS);
    EXPECT_EQ(remove(HKEY_CURRENT_USER, ""), ERROR_ACCESS_DENIED);

    Created successor(HKEY_CURRENT_USER, tool_key);
    EXPECT_EQ(values_of(successor.handle), "259");
    EXPECT_EQ(get(key.handle, "Value"), "error:1018");
    EXPECT_EQ(set(key.handle, "Value", REG_SZ, "new"), ERROR_KEY_DELETED);
    EXPECT_EQ(RegDeleteValueA(key.handle, "Value"), 1018);
    EXPECT_EQ(values_of(key.handle), "1018");
    EXPECT_EQ(Opened(key.handle, "").error, ERROR_KEY_DELETED);
    EXPECT_EQ(Created(key.handle, "Child").error, ERROR_KEY_DELETED);
}

TEST_F(Registry, HandlesAreCheckedAndAllowWhatTheyWereOpenedFor) {
    HKEY closed = Created(HKEY_CURRENT_USER, tool_key).handle;
    EXPECT_EQ(RegCloseKey(closed), 6);
    Opened reader(HKEY_CURRENT_USER, tool_key, KEY_READ);
    EXPECT_NE(reader.handle, closed);
    EXPECT_EQ(get(nullptr, "Value"), "error:6");

    EXPECT_EQ(set(reader.handle, "Value", REG_SZ, ""), ERROR_ACCESS_DENIED);
    Opened writer(HKEY_CURRENT_USER, tool_key, KEY_WRITE);
    EXPECT_EQ(get(writer.handle, "Value"), "error:5");
    EXPECT_EQ(keys_below(writer.handle), "5");
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), 0);
    EXPECT_EQ(Opened(HKEY_CURRENT_USER, tool_key).error, ERROR_SUCCESS);
}

int files_open_below(const std::filesystem::path& folder) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone; // the iterator's own descriptor
        const auto file = std::filesystem::read_symlink(entry.path(), gone);
        count += file.string().starts_with(folder.string());
    }
    return count;
}

TEST_F(Registry, ThreadsAndProcessesWriteAtATime) {
    constexpr int each = 50;
    const auto write = [](int writer) {
        Created key(HKEY_CURRENT_USER, tool_key);
        int failures = 0;
        for (int i = 0; i < each; ++i) {
            const std::string name = std::to_string(writer) + "." + std::to_string(i);
            failures += set(key.handle, name.c_str(), REG_SZ, name) != ERROR_SUCCESS;
        }
        return failures;
    };
    // Both also race for making the hive. The parent has it open when the third comes, which must
    // not inherit the connection: SQLite would take the parent's locks for the child's.
    const pid_t first = start([&] { return write(0); });
    const pid_t second = start([&] { return write(1); });
    EXPECT_EQ(write(2), 0);
    const pid_t third = start([&] { return files_open_below(registry_.folder) + write(3); });
    std::thread thread([&] { EXPECT_EQ(write(4), 0); });
    EXPECT_EQ(write(5), 0);
    thread.join();
    for (const pid_t child : {first, second, third}) {
        EXPECT_EQ(exit_code(child), 0);
    }
    Opened key(HKEY_CURRENT_USER, tool_key);
    const std::string all = values_of(key.handle);
    EXPECT_EQ(std::count(all.begin(), all.end(), ' '), 6 * each);
}

TEST_F(Registry, WhatWasReportedWrittenSurvivesTheDeathOfTheWriter) {
    constexpr int rounds = 200 / support::slow_build_divisor;
    std::mt19937 random(4711);
    std::uint32_t kept = 0;
    std::uint32_t next = 0;
    for (int round = 0; round < rounds; ++round) {
        int line[2];
        ASSERT_EQ(::pipe(line), 0);
        const pid_t writer = start([&] {
            Created key(HKEY_CURRENT_USER, tool_key);
            for (std::uint32_t number = next;; ++number) {
                const std::string name = std::to_string(number % 40);
                const std::string bytes(reinterpret_cast<char*>(&number), sizeof(number));
                if (set(key.handle, name.c_str(), REG_DWORD, bytes) ||
                    ::write(line[1], &number, sizeof(number)) != sizeof(number)) {
                    return 1;
                }
            }
        });
        ::close(line[1]);
        // It dies between reporting some write and the next ones.
        auto left = 1 + random() % 20;
        while (left && ::read(line[0], &kept, sizeof(kept)) == sizeof(kept)) {
            --left;
        }
        ASSERT_EQ(left, 0U);
        ::usleep(static_cast<useconds_t>(random() % 3'000));
        ::kill(writer, SIGKILL);
        ASSERT_EQ(exit_code(writer), -1);
        while (::read(line[0], &kept, sizeof(kept)) == sizeof(kept)) {
        }
        ::close(line[0]);

        Opened key(HKEY_CURRENT_USER, tool_key);
        const CRegistryKey values(key.handle, 0);
        for (std::uint32_t number = next; number <= kept; ++number) {
            if (number + 40 > kept + 1) { // no later number took its place
                ASSERT_EQ(values.GetValue(std::to_string(number % 40).c_str(), ~0U), number)
                    << "round " << round;
            }
        }
        next = kept + 2;
    }
}

TEST_F(Registry, ADamagedHiveIsKeptAsideAndReportedAndANewOneBegins) {
    const support::Reports reports;
    const std::string garbage(5000, 'x');
    std::ofstream(registry_.folder / "user.db") << garbage;
    Created key(HKEY_CURRENT_USER, tool_key);
    EXPECT_EQ(key.error, ERROR_SUCCESS);
    ASSERT_EQ(reports.lines().size(), 1U);
    const std::string line = reports.lines()[0];
    EXPECT_NE(line.find("user.db is damaged; kept as "), std::string::npos) << line;
    EXPECT_EQ(std::filesystem::file_size(line.substr(line.rfind(' ') + 1)), garbage.size());
}

TEST_F(Registry, DamageInUseIsFoundAndTheCallerIsTold) {
    const support::Reports reports;
    for (int i = 0; i < 200; ++i) {
        Created(HKEY_LOCAL_MACHINE, ("SOFTWARE\\" + std::to_string(i)).c_str());
    }
    tarnel::close_registry();
    const auto file = registry_.folder / "machine.db";
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(4096);
    stream << std::string(std::filesystem::file_size(file) - 4096, '\xEE');
    stream.close();

    EXPECT_EQ(Opened(HKEY_LOCAL_MACHINE, "SOFTWARE\\7").error, ERROR_REGISTRY_IO_FAILED);
    EXPECT_EQ(reports.lines().size(), 1U) << "there may be no second call";
    EXPECT_EQ(Opened(HKEY_LOCAL_MACHINE, "SOFTWARE").error, ERROR_SUCCESS);
    EXPECT_EQ(reports.lines().size(), 2U);
}

/// Runs `work` as somebody who may write nothing in `folder`.
void without_rights(const std::filesystem::path& folder, const std::function<void()>& work) {
    std::filesystem::permissions(folder, std::filesystem::perms(0555));
    const int result = exit_code(start([&] {
        if (::geteuid() == 0 && ::setuid(65534) != 0) {
            return 99;
        }
        work();
        return testing::Test::HasFailure() ? 1 : 0;
    }));
    std::filesystem::permissions(folder, std::filesystem::perms(0755));
    EXPECT_EQ(result, 0);
}

TEST_F(Registry, WithoutRightsTheMachineHiveIsReadAndRefusesWrites) {
    set(Created(HKEY_LOCAL_MACHINE, "SOFTWARE\\Maker").handle, "Port", REG_SZ, "COM1:");
    tarnel::close_registry();
    std::filesystem::permissions(registry_.folder / "machine.db", std::filesystem::perms(0444));
    without_rights(registry_.folder, [] {
        Opened reader(HKEY_LOCAL_MACHINE, "SOFTWARE\\Maker", KEY_READ);
        EXPECT_EQ(get(reader.handle, "Port"), "1:COM1:");
        EXPECT_EQ(Created(HKEY_LOCAL_MACHINE, "SOFTWARE\\Maker", KEY_READ).error, ERROR_SUCCESS);
        EXPECT_EQ(Opened(HKEY_LOCAL_MACHINE, "SOFTWARE\\Maker").error, ERROR_ACCESS_DENIED);
        EXPECT_EQ(Created(HKEY_LOCAL_MACHINE, "SOFTWARE\\New").error, ERROR_ACCESS_DENIED);
        EXPECT_EQ(remove(HKEY_LOCAL_MACHINE, "SOFTWARE\\Maker"), ERROR_ACCESS_DENIED);
        EXPECT_EQ(set(HKEY_LOCAL_MACHINE, "Value", REG_SZ, "x"), ERROR_ACCESS_DENIED);
    });
}

TEST_F(Registry, AHiveThatCannotBeMadeReadsAsEmpty) {
    without_rights(registry_.folder, [] {
        for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
            EXPECT_EQ(Opened(root, "SOFTWARE", KEY_READ).error, ERROR_FILE_NOT_FOUND);
            EXPECT_EQ(get(root, "Value"), "error:2");
            EXPECT_EQ(keys_below(root), "259");
            EXPECT_EQ(Created(root, "SOFTWARE\\Maker").error, ERROR_ACCESS_DENIED);
        }
    });
}

TEST_F(Registry, TypedValuesReadAsTheirDefaultUnlessTheyAreOfTheKind) {
    Created key(HKEY_CURRENT_USER, tool_key);
    CRegistryKey values(key.handle, 0);
    EXPECT_EQ(values.GetValue("Port", "COM1:"), "COM1:");
    EXPECT_EQ(values.GetValue("Bits", 0), 0U);
    EXPECT_EQ(values_of(key.handle), "259"); // nothing came of reading

    EXPECT_TRUE(values.WriteValue("Port", "COM3:"));
    EXPECT_TRUE(values.WriteValue("Bits", 0x8000'0000UL));
    EXPECT_EQ(get(key.handle, "Port"), "1:COM3:"s + '\0');
    EXPECT_EQ(get(key.handle, "Bits"), "4:\0\0\0\x80"s);
    EXPECT_EQ(values.GetValue("Port", ""), "COM3:");
    EXPECT_EQ(values.GetValue("Bits", 7), 0x8000'0000U);
    EXPECT_EQ(values.GetValue("Bits", "text"), "text");
    EXPECT_EQ(values.GetValue("Port", 7), 7U);
    set(key.handle, "Bare", REG_SZ, "no zero");
    EXPECT_EQ(values.GetValue("Bare", ""), "no zero");
    EXPECT_FALSE(CRegistryKey(nullptr, 0).WriteValue("Port", "COM3:"));

    HKEY mine = nullptr;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, tool_key, 0, KEY_READ, &mine), 0);
    CRegistryKey(mine, 1);
    EXPECT_EQ(RegCloseKey(mine), 6);
}

} // namespace
