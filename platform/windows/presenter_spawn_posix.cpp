#include "platform/windows/presenter_check.h"
#include "platform/windows/presenter_spawn.h"

#include <dlfcn.h>
#include <spawn.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace tarnel {
namespace {

/// From the layer's folder: in a build tree, and installed below any prefix, in `lib` or in
/// `lib/<architecture>`.
constexpr std::string_view places[] = {
    "/../bin/tarnel-presenter",
    "/../libexec/tarnel/tarnel-presenter",
    "/../../libexec/tarnel/tarnel-presenter",
};

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
    Start(int input, int output, int errors) {
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
        if (errors != STDERR_FILENO) {
            ::posix_spawn_file_actions_adddup2(&files, errors, STDERR_FILENO);
        }
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

std::vector<std::string> presenter_places() {
    if (const char* const named = std::getenv("TARNEL_PRESENTER")) {
        return {named};
    }
    std::vector<std::string> paths;
    for (const std::string_view place : places) {
        paths.push_back(folder_of_layer().append(place));
    }
    return paths;
}

std::string presenter_path() {
    for (std::string& path : presenter_places()) {
        if (is_program(path)) {
            return std::move(path);
        }
    }
    return {};
}

pid_t spawn_presenter(const std::string& path, const std::vector<std::string>& arguments, int input,
                      int output, int errors) {
    std::vector<char*> all = {const_cast<char*>(path.c_str())};
    for (const std::string& argument : arguments) {
        all.push_back(const_cast<char*>(argument.c_str()));
    }
    all.push_back(nullptr);
    const Start start(input, output, errors);
    pid_t child = -1;
    const int refused =
        ::posix_spawn(&child, path.c_str(), &start.files, &start.attributes, all.data(), ::environ);
    return refused == 0 ? child : -1;
}

} // namespace tarnel
