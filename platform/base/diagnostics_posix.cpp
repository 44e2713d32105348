#include "platform/base/descriptor.h"
#include "platform/base/diagnostics.h"
#include "platform/base/never_destroyed.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <mutex>
#include <string>

namespace tarnel {
namespace {

void write_all(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const auto written =
            retry_on_signal([&] { return ::write(descriptor, text.data(), text.size()); });
        if (written <= 0) {
            return; // nobody is left to tell
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

/// The descriptor that TARNEL_DEBUG names: standard error, a file, or none (-1).
Descriptor open_debug_target() {
    const char* name = std::getenv("TARNEL_DEBUG");
    if (!name || !*name) {
        return {};
    }
    if (std::string_view(name) == "stderr") {
        return Descriptor(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0));
    }
    return Descriptor(::open(name, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
}

void write_to_debug_target(void*, std::string_view text) {
    static NeverDestroyed<Descriptor> target(open_debug_target());
    if (target.get()) {
        write_all(target.get().get(), text);
    }
}

void write_to_standard_error(void*, std::string_view text) {
    write_all(STDERR_FILENO, text);
}

class Channel {
  public:
    explicit Channel(DiagnosticSink usual) : usual_(usual) {}

    void set(DiagnosticSink sink, void* context) {
        const std::lock_guard guard(channel_lock_);
        sink_ = sink;
        context_ = context;
    }

    void write(std::string_view text) {
        const std::lock_guard guard(channel_lock_);
        sink_ ? sink_(context_, text) : usual_(nullptr, text);
    }

  private:
    std::mutex channel_lock_;
    const DiagnosticSink usual_;
    DiagnosticSink sink_ = nullptr;
    void* context_ = nullptr;
};

Channel& debug_channel() {
    static NeverDestroyed<Channel> channel(&write_to_debug_target);
    return channel.get();
}

Channel& report_channel() {
    static NeverDestroyed<Channel> channel(&write_to_standard_error);
    return channel.get();
}

} // namespace

void set_debug_sink(DiagnosticSink sink, void* context) {
    debug_channel().set(sink, context);
}

void set_report_sink(DiagnosticSink sink, void* context) {
    report_channel().set(sink, context);
}

void report(std::string_view line) {
    report_channel().write(std::string(line) + '\n');
}

} // namespace tarnel

void OutputDebugStringA(LPCSTR text) {
    if (text) {
        tarnel::debug_channel().write(text);
    }
}
