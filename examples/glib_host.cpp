// A GLib program hosts the library: its timer goes on while one of the library's modal dialogs is
// open.

#include "platform/messages/host_loop.h"
#include "serial/PortConfiguration.h"

#include <glib-unix.h>

#include <cstdio>

namespace {

struct Host {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    CComDeviceConfiguration port;
    bool asking = false;
    int ticks_while_asking = 0;
};

/// The library's messages run in GLib's loop ...
gboolean run_library(int, GIOCondition, gpointer) {
    tarnel::run_pending_messages();
    return G_SOURCE_CONTINUE;
}

/// ... and its nested loops sleep in it. What run_library listens to ends this wait, too.
void wait_in_glib(void*, int, int milliseconds) {
    bool over = false;
    guint limit = 0;
    if (milliseconds >= 0) {
        limit = g_timeout_add(
            static_cast<guint>(milliseconds),
            [](gpointer passed) {
                *static_cast<bool*>(passed) = true;
                return G_SOURCE_REMOVE;
            },
            &over);
    }
    g_main_context_iteration(nullptr, TRUE);
    if (limit != 0 && !over) {
        g_source_remove(limit);
    }
}

gboolean tick(gpointer context) {
    Host& host = *static_cast<Host*>(context);
    if (host.asking) {
        std::printf("tick %d\n", ++host.ticks_while_asking);
        std::fflush(stdout);
    }
    return G_SOURCE_CONTINUE;
}

gboolean ask(gpointer context) {
    Host& host = *static_cast<Host*>(context);
    host.asking = true;
    host.port.Edit(0); // returns when the person has closed the dialog
    host.asking = false;
    std::printf("%s\n", host.port.GetInfoString().GetString());
    g_main_loop_quit(host.loop);
    return G_SOURCE_REMOVE;
}

} // namespace

int main() {
    Host host;
    g_unix_fd_add(tarnel::message_descriptor(), G_IO_IN, &run_library, nullptr);
    tarnel::set_host_wait({&wait_in_glib, nullptr});
    g_timeout_add(100, &tick, &host);
    g_idle_add(&ask, &host);
    g_main_loop_run(host.loop);
    g_main_loop_unref(host.loop);
    return 0;
}
