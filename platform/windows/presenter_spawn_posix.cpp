#include "platform/windows/presenter_spawn.h"

#include <dlfcn.h>
#include <spawn.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string_view>

namespace tarnel {
namespace {

constexpr std::string_view places[] = {"/tarnel-presenter", "/../libexec/tarnel/tarnel-presenter",
                                       "/../bin/tarnel-presenter"};

std::string folder_of_layer() {
    Dl_info here{};
    static const char mark = 0;
    if (::dladdr(&mark, &here) == 0 || !here.dli_fname) {
        return {};
    }
    const std::string_view library = here.dli_fname;
    return std::string(library.substr(0, library.rfind('/')));
}

bool is_program(const std::string& path) {
    return ::access(path.c_str(), X_OK) == 0;
}

/// What a program is started with: none of this process's signal settings and descriptors.
class Start {
  public:
    Start(int input, int output) {
        ::posix_spawnattr_init(&attributes);
        ::posix_spawn_file_actions_init(&files);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes, &signals);
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes, &signals);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK |
                                                    POSIX_SPAWN_SETSIGDEF);
        ::posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
        ::posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    }

    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    ~Start() {
        ::posix_spawn_file_actions_destroy(&files);
        ::posix_spawnattr_destroy(&attributes);
    }

    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t files;
};

} // namespace

std::string presenter_path() {
    if (const char* const named = std::getenv("TARNEL_PRESENTER")) {
        return is_program(named) ? named : "";
    }
    const std::string folder = folder_of_layer();
    for (const std::string_view place : places) {
        if (std::string path = folder + std::string(place); is_program(path)) {
            return path;
        }
    }
    return {};
}

pid_t spawn_presenter(const std::string& path, const std::vector<std::string>& arguments, int input,
                      int output) {
    std::vector<char*> all = {const_cast<char*>(path.c_str())};
    for (const std::string& argument : arguments) {
        all.push_back(const_cast<char*>(argument.c_str()));
    }
    all.push_back(nullptr);
    const Start start(input, output);
    pid_t child = -1;
    const int refused =
        ::posix_spawn(&child, path.c_str(), &start.files, &start.attributes, all.data(), ::environ);
    return refused == 0 ? child : -1;
}

} // namespace tarnel
