// The machine's settings, against the same numbers kept by hand.
// - f.settings.reads, .writes: LocalMachineRegistry, which opens the keys down to its section for
//   each call, and whose writes are on the disk when it returns; against SQLite with one prepared
//   statement, the same journal and the same promise.
// - f.settings.value: GetRegistryValue of a key that stays open, against the same reads.
// - f.settings.ini: LocalMachineRegistry with an INI file, which looks at each call whether
// somebody
//   has changed it; against GLib's key file, which is loaded once and follows no changes.

#include "bench/report.h"
#include "bench/settings_by_hand.h"
#include "core/MachineSettings.h"
#include "core/RegistryValues.h"

#include <glib.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace {

using bench::name_of;
using bench::names;
using bench::rate;

constexpr const char* section = "Section";

/// Reads a second of `read(name)`, which gives the name's number.
template <typename Read>
double read_rate(Read read) {
    return rate(20'000, [&](unsigned number) {
        if (read(name_of(number).c_str()) != number % names) {
            bench::fail("reading");
        }
    });
}

template <typename Read, typename Minimum>
void compare_reads(const std::string& area, Read read, Minimum minimum) {
    bench::report(
        area, bench::compare([&] { return read_rate(read); }, [&] { return read_rate(minimum); }),
        "reads/s");
}

void measure_registry(const std::filesystem::path& folder) {
    bench::Plain plain(folder / "plain.db", "DELETE");
    LocalMachineRegistry settings("Company", "Product", "Bench");
    unsigned turn = 0; // each write changes the value: SQLite would leave out one that does not
    const auto write = [&](unsigned number) {
        if (!settings.WriteProfileInt(section, name_of(number).c_str(), static_cast<int>(++turn))) {
            bench::fail("writing");
        }
    };
    const auto plain_write = [&](unsigned number) { plain.write(name_of(number), ++turn); };
    bench::report(
        "f.settings.writes",
        bench::compare([&] { return rate(50, write); }, [&] { return rate(50, plain_write); }),
        "writes/s");

    for (unsigned number = 0; number < names; ++number) {
        settings.WriteProfileInt(section, name_of(number).c_str(), static_cast<int>(number));
        plain.write(name_of(number), number);
    }
    const auto plain_read = [&](const char* name) { return plain.read(name); };
    compare_reads(
        "f.settings.reads",
        [&](const char* name) {
            return settings.GetProfileIntA(section, name, static_cast<int>(names));
        },
        plain_read);
    HKEY key = settings.GetSectionKey(section);
    compare_reads(
        "f.settings.value",
        [&](const char* name) { return GetRegistryValue(key, name, static_cast<int>(names)); },
        plain_read);
    RegCloseKey(key);
}

void measure_ini(const std::string& path) {
    std::ofstream file(path);
    file << "[" << section << "]\n";
    for (unsigned number = 0; number < names; ++number) {
        file << name_of(number) << "=" << number << '\n';
    }
    file.close();
    GKeyFile* const loaded = g_key_file_new();
    if (!g_key_file_load_from_file(loaded, path.c_str(), G_KEY_FILE_NONE, nullptr)) {
        bench::fail("loading");
    }
    std::this_thread::sleep_for(std::chrono::seconds(1)); // what has just changed is not kept
    LocalMachineRegistry settings(nullptr, path.c_str(), nullptr);
    const auto read = [&](const char* name) {
        return settings.GetProfileIntA(section, name, static_cast<int>(names));
    };
    const auto blind = [&](const char* name) {
        return static_cast<unsigned>(g_key_file_get_integer(loaded, section, name, nullptr));
    };
    const auto watchful = [&](const char* name) {
        struct stat status {};

        return ::stat(path.c_str(), &status) == 0 ? blind(name) : names;
    };
    compare_reads("f.settings.ini", read, watchful);
    compare_reads("f.settings.ini.blind", read, blind);
    g_key_file_free(loaded);
}

} // namespace

int main() {
    // In the current folder, which lies on a disk: the temporary folder may lie in memory.
    std::string pattern = std::filesystem::current_path() / "settings-bench-XXXXXX";
    const std::filesystem::path folder = ::mkdtemp(pattern.data());
    ::setenv("TARNEL_REGISTRY_DIR", folder.c_str(), 1);
    measure_registry(folder);
    measure_ini(folder / "bench.ini");
    std::filesystem::remove_all(folder);
}
