#include "tools/doctor.h"

#include <fmt/format.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

namespace {

constexpr mode_t group_rights = S_IRGRP | S_IWGRP;

std::string group_name(gid_t group) {
    const ::group* const entry = ::getgrgid(group);
    return entry ? entry->gr_name : fmt::to_string(group);
}

/// As the system's list of groups has it; a session keeps those that it began with.
bool is_listed_in(gid_t group) {
    const passwd* const user = ::getpwuid(::geteuid());
    std::vector<gid_t> groups(1024);
    int count = static_cast<int>(groups.size());
    if (!user || ::getgrouplist(user->pw_name, user->pw_gid, groups.data(), &count) < 0) {
        return false;
    }
    return std::find(groups.begin(), groups.begin() + count, group) != groups.begin() + count;
}

} // namespace

std::string user_name() {
    const passwd* const user = ::getpwuid(::geteuid());
    return user ? user->pw_name : fmt::to_string(::geteuid());
}

std::string cure_of_rights(const std::string& device) {
    struct stat status {};

    const bool known = ::stat(device.c_str(), &status) == 0;
    const bool by_group = (status.st_mode & group_rights) == group_rights && status.st_gid != 0;
    if (!known || !by_group) {
        return fmt::format("sudo chown {0} {1} && sudo chmod u+rw {1}, which lasts until the "
                           "device appears anew",
                           user_name(), shell_word(device));
    }
    if (is_listed_in(status.st_gid)) {
        return fmt::format("Log out and in again: you have joined {} since you logged in.",
                           group_name(status.st_gid));
    }
    return fmt::format("sudo usermod -aG {} {}, then log out and in again",
                       group_name(status.st_gid), user_name());
}

std::string clean(const std::string& path) {
    std::error_code error;
    const auto straight = std::filesystem::weakly_canonical(path, error);
    return error ? path : straight.string();
}

std::string shell_word(const std::string& path) {
    constexpr const char* plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                                  "/._-+:@,";
    if (!path.empty() && path.find_first_not_of(plain) == path.npos) {
        return path;
    }
    std::string word = "'";
    for (const char letter : path) {
        word += letter == '\'' ? "'\\''" : std::string(1, letter);
    }
    return word + "'";
}
