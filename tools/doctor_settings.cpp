#include "platform/registry/hive_condition.h"
#include "tools/doctor.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <span>

namespace {

using tarnel::HiveCondition;

/// What is said of a hive: {file} is its path, {folder} that of its folder, {user} who asks.
struct Advice {
    HiveCondition condition;
    Level level;
    const char* what;
    const char* cure;
    const char* fault; ///< of the service; "" when it works
};

constexpr const char* take_over = "sudo chown -R {user}: {folder} && chmod -R u+rwX {folder}";
constexpr const char* put_back = "Put a copy of yours in its place, if you have one";
constexpr const char* look_again = "Wait for the other program, or end it: fuser {file}";

constexpr Advice of_user[] = {
    {HiveCondition::good, Level::ok, "Your settings are in {file}.", "", ""},
    {HiveCondition::absent, Level::ok, "You have no settings yet; they will be kept in {file}.", "",
     ""},
    {HiveCondition::no_place, Level::problem,
     "There is no folder for your settings: HOME is not set.", "export HOME=~{user}",
     "HOME is not set"},
    {HiveCondition::not_made, Level::problem,
     "{file} cannot be made: you can neither make nor write to its folder.",
     "sudo install -d -o {user} -m 700 {folder}; or another: export XDG_CONFIG_HOME=FOLDER",
     "{file} cannot be made"},
    {HiveCondition::read_only, Level::problem, "You may not write to your settings in {file}.",
     take_over, "they can be read, and not be written"},
    {HiveCondition::unreadable, Level::problem,
     "Your settings in {file} cannot be opened, and read as empty.", take_over,
     "{file} cannot be opened"},
    {HiveCondition::damaged, Level::problem,
     "Your settings in {file} are damaged: a program that meets the damage sets them aside, and "
     "begins anew.",
     put_back, "{file} is damaged"},
    {HiveCondition::busy, Level::problem, "Another program blocks your settings in {file}.",
     look_again, "another program blocks them"},
};

// Who may not write to the machine's settings is given defaults, even of what is there.
constexpr Advice of_machine[] = {
    {HiveCondition::good, Level::ok, "The machine's settings are in {file}.", "", ""},
    {HiveCondition::absent, Level::ok,
     "The machine has no settings yet; they will be kept in {file}.", "", ""},
    {HiveCondition::not_made, Level::warning,
     "The machine has no settings yet, and you ({user}) may not make them: reads give defaults, "
     "writes fail.",
     "sudo tarnel ports, which makes {file}", "you may not make them"},
    {HiveCondition::read_only, Level::warning,
     "You ({user}) may not write to the machine's settings in {file}: reads give defaults, writes "
     "fail; the machine's COM names are read.",
     "Run the program as root; or, for a group: sudo chgrp -R GROUP {folder} && "
     "sudo chmod -R g+rwX {folder}",
     "you may not write to them"},
    {HiveCondition::unreadable, Level::problem,
     "The machine's settings in {file} cannot be opened: reads give defaults, writes fail.",
     "sudo chmod 755 {folder} && sudo chmod 644 {file}", "{file} cannot be opened"},
    {HiveCondition::damaged, Level::problem,
     "The machine's settings in {file} are damaged: a program of root's that meets the damage "
     "sets them aside, and begins anew.",
     put_back, "{file} is damaged"},
    {HiveCondition::busy, Level::problem,
     "Another program blocks the machine's settings in {file}.", look_again,
     "another program blocks them"},
};

void advise(const char* service, const tarnel::HiveReport& hive, std::span<const Advice> advices,
            Diagnosis& diagnosis) {
    const std::string folder = std::filesystem::path(hive.path).parent_path();
    const auto fill = [](const char* text, const std::string& file, const std::string& where) {
        return fmt::format(fmt::runtime(text), fmt::arg("file", file), fmt::arg("folder", where),
                           fmt::arg("user", user_name()));
    };
    const auto advice = std::ranges::find(advices, hive.condition, &Advice::condition);
    diagnosis.add(advice->level, fill(advice->what, hive.path, folder),
                  fill(advice->cure, shell_word(hive.path), shell_word(folder)));
    if (*advice->fault) {
        diagnosis.fails(service, fill(advice->fault, hive.path, folder));
    } else {
        diagnosis.works(service);
    }
    for (const std::string& file : hive.aside) {
        diagnosis.add(Level::warning, fmt::format("{} was damaged, and has been set aside.", file),
                      fmt::format("sqlite3 {0} .dump shows what can be read of it; rm {0}* when it "
                                  "is not needed any more",
                                  shell_word(file)));
    }
}

} // namespace

Diagnosis examine_settings() {
    Diagnosis diagnosis;
    advise("settings of the user", tarnel::examine_hive(HKEY_CURRENT_USER), of_user, diagnosis);
    advise("settings of the machine", tarnel::examine_hive(HKEY_LOCAL_MACHINE), of_machine,
           diagnosis);
    return diagnosis;
}
