#include "tools/point_server.h"

#include "net/ServerSocket.h"
#include "net/TextData.h"
#include "platform/messages/host_loop.h"
#include "platform/messages/message.h"
#include "platform/messages/window.h"
#include "tools/verbs.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int exit_no_port = 9;
constexpr auto patience = std::chrono::seconds(10);
constexpr int longest_sleep_ms = 200;

} // namespace

/// What runs on the thread.
class PointServer::Connection final : public CTCPIPServerSocket {
  public:
    Connection(PointServer& server, UINT port)
        : CTCPIPServerSocket(&received_), server_(server), port_(port) {
        tarnel::set_host_wait({&Connection::wait, this});
    }

    /// Runs until the mailbox is closed. `ready` gets the mailbox, or null without a port.
    void run(std::promise<HWND> ready) {
        if (!Listen(port_)) {
            ready.set_value(nullptr);
            return;
        }
        mailbox_ = tarnel::create_window(&Connection::handle_mail, this);
        ready.set_value(mailbox_);
        for (MSG message; GetMessageA(&message, nullptr, 0, 0) > 0;) {
            DispatchMessageA(&message);
        }
        DestroyWindow(mailbox_);
    }

  private:
    static LRESULT handle_mail(void* context, HWND, UINT message, WPARAM, LPARAM) {
        auto& connection = *static_cast<Connection*>(context);
        if (message == WM_CLOSE) {
            PostQuitMessage(0);
        } else if (message == WM_USER) {
            connection.send_texts();
        }
        return 0;
    }

    void send_texts() {
        std::vector<std::string> texts;
        {
            const std::lock_guard guard(server_.lock_);
            texts.swap(server_.texts_);
        }
        for (const std::string& text : texts) {
            if (!IsConnected()) {
                break;
            }
            send(text);
        }
        if (!IsConnected() && !IsListening()) {
            Listen(port_);
        }
    }

    void send(const std::string& text) {
        payload_.SetString(text.c_str());
        sending_since_ = Clock::now();
        const bool sent = Send(&payload_) != 0;
        sending_since_ = {};
        if (!sent) {
            fmt::print(stderr, "The client at port {} is dropped: it does not read.\n", port_);
            Close();
        }
    }

    /// Sleeps as the layer wants it, but not through the end of a client's time to read.
    static void wait(void* context, int descriptor, int milliseconds) {
        auto& connection = *static_cast<Connection*>(context);
        const bool sending = connection.sending_since_ != Clock::time_point();
        pollfd entry{descriptor, POLLIN, 0};
        const bool endless = milliseconds < 0;
        ::poll(&entry, 1,
               !sending  ? milliseconds
               : endless ? longest_sleep_ms
                         : std::min(milliseconds, longest_sleep_ms));
        if (sending && Clock::now() - connection.sending_since_ > patience) {
            connection.CancelBlockingCall();
        }
    }

    void OnMessageReceived(CSocketData*) override {}

    void OnConnectionClosed(int) override { PostMessageA(mailbox_, WM_USER, 0, 0); }

    void OnConnectionEstablished(int) override {}

    static CSocketDataStringFormat no_terminator() {
        CSocketDataStringFormat format;
        format.SetSendNullTerminatedString(0);
        return format;
    }

    PointServer& server_;
    const UINT port_;
    HWND mailbox_ = nullptr;
    Clock::time_point sending_since_;
    CSocketDataStringFormat format_ = no_terminator();
    CSocketDataString received_{format_};
    CSocketDataString payload_{format_};
};

PointServer::PointServer(UINT port) {
    std::promise<HWND> ready;
    auto mailbox = ready.get_future();
    thread_ = std::thread([this, port, ready = std::move(ready)]() mutable {
        Connection(*this, port).run(std::move(ready));
    });
    mailbox_ = mailbox.get();
    if (!mailbox_) {
        thread_.join();
        fail(exit_no_port, fmt::format("Port {} is taken, or not yours.", port));
    }
}

PointServer::~PointServer() {
    PostMessageA(mailbox_, WM_CLOSE, 0, 0);
    thread_.join();
}

void PointServer::send(std::string text) {
    bool first = false;
    {
        const std::lock_guard guard(lock_);
        first = texts_.empty();
        texts_.push_back(std::move(text));
    }
    if (first) {
        PostMessageA(mailbox_, WM_USER, 0, 0);
    }
}
