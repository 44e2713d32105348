#include "bench/report.h"
#include "bench/settings_by_hand.h"
#include "platform/companions/registry_key.h"
#include "platform/registry/registry.h"

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <string>

// Typed values through the registry against SQLite with prepared statements: the same log, the same
// promise that a write is on the disk when it returns.

namespace {

using bench::fail;
using bench::name_of;
using bench::names;
using bench::Plain;
using bench::rate;

void measure(CRegistryKey& key, Plain& plain) {
    // Each write changes the value: SQLite would leave out one that does not.
    unsigned turn = 0;
    const auto write = [&](unsigned number) {
        if (!key.WriteValue(name_of(number).c_str(), ++turn)) {
            fail("writing");
        }
    };
    const auto plain_write = [&](unsigned number) { plain.write(name_of(number), ++turn); };
    bench::report(
        "f.registry.writes",
        bench::compare([&] { return rate(100, write); }, [&] { return rate(100, plain_write); }),
        "writes/s");

    for (unsigned number = 0; number < names; ++number) {
        key.WriteValue(name_of(number).c_str(), number);
        plain.write(name_of(number), number);
    }
    const auto read = [&](unsigned number) {
        if (key.GetValue(name_of(number).c_str(), names) != number % names) {
            fail("reading");
        }
    };
    const auto plain_read = [&](unsigned number) {
        if (plain.read(name_of(number)) != number % names) {
            fail("reading");
        }
    };
    bench::report("f.registry.reads",
                  bench::compare([&] { return rate(20'000, read); },
                                 [&] { return rate(20'000, plain_read); }),
                  "reads/s");
}

} // namespace

int main() {
    // In the current folder, which lies on a disk: the temporary folder may lie in memory.
    std::string pattern = std::filesystem::current_path() / "registry-bench-XXXXXX";
    const std::filesystem::path folder = ::mkdtemp(pattern.data());
    ::setenv("TARNEL_REGISTRY_DIR", folder.c_str(), 1);
    HKEY key = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Bench", 0, nullptr, 0, KEY_READ | KEY_WRITE,
                        nullptr, &key, nullptr) != 0) {
        fail("making a key");
    }
    CRegistryKey values(key, 1);
    Plain plain(folder / "plain.db", "WAL");
    measure(values, plain);
    std::filesystem::remove_all(folder);
}
