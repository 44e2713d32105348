#pragma once

#include "platform/base/descriptor.h"
#include "platform/comm/line_input.h"
#include "platform/comm/tty.h"
#include "platform/threads/event_object.h"

#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace tarnel {

/// One open serial line: its descriptor, its settings, what it has received, and up to one
/// operation of each kind. It has no thread: whoever waits for an operation serves it. When the
/// line is lost, those who wait look for it to come back and put everything back as it was.
class Line final : public Waitable, public std::enable_shared_from_this<Line> {
  public:
    enum Kind { reading, writing, waiting };

    /// Opens the port; null with the last error. Reports who holds it.
    static std::shared_ptr<Line> open(const std::string& name);

    Line(std::string name, const std::string& path, Descriptor descriptor, const DCB& settings);

    // Any thread. Results are ERROR_SUCCESS, ERROR_IO_PENDING or what went wrong.

    DCB settings();
    DWORD set_settings(const DCB& settings);
    COMMTIMEOUTS timeouts();
    void set_timeouts(const COMMTIMEOUTS& timeouts);
    void set_mask(DWORD events);
    DWORD wait_events(DWORD* events, OVERLAPPED* overlapped);
    DWORD read(char* buffer, DWORD size, OVERLAPPED* overlapped);
    DWORD write(const char* data, DWORD size, OVERLAPPED* overlapped);

    /// The outcome of an operation as it stands: ERROR_IO_INCOMPLETE while it goes on.
    DWORD outcome(const OVERLAPPED& overlapped, DWORD& count);

    DWORD take_errors(COMSTAT& status);
    void purge(DWORD flags);
    void escape(DWORD function);
    bool take_break();
    DWORD unsent();

    /// Goes on with an operation.
    void serve_operation(const OVERLAPPED& overlapped);
    void serve(Kind kind);
    Source::Watch watch(Kind kind);

    void handle_closed() override;

  private:
    struct Operation {
        OVERLAPPED* overlapped = nullptr; ///< null: none runs
        std::shared_ptr<Event> event;
        char* target = nullptr;
        const char* data = nullptr;
        DWORD size = 0;
        DWORD done = 0;
        DWORD* events = nullptr;
        bool first_bytes_do = false; ///< a read that ends with whatever comes first
        Deadline deadline;
        DWORD interval = 0; ///< milliseconds after the last byte; 0: no limit
        Deadline interval_end;
    };

    /// Serves one kind of operation on behalf of the event that waits for it.
    struct Server final : Source {
        Line* line = nullptr;
        Kind kind = reading;

        Watch watch() override { return line->watch(kind); }

        void serve() override { line->serve(kind); }
    };

    bool is_signalled() const override { return false; }

    DWORD take_settings(const DCB& settings);

    // All of these under the line's lock.
    DWORD start(Kind kind, OVERLAPPED* overlapped);
    DWORD pending_or_done(Kind kind, const OVERLAPPED& overlapped);
    void finish(Kind kind, DWORD error);
    void drop_unsent();
    void advance_read();
    void advance_write();
    void advance_wait();
    void receive();
    void note_line_errors(bool damaged, std::uint64_t place);
    bool may_send() const;
    void lose();
    void look_for_return();
    void put_lines_back();

    const std::string name_;
    const std::string identity_;
    std::mutex line_lock_;
    Descriptor descriptor_;
    bool open_ = true;
    const bool real_; ///< no pseudo terminal
    DCB settings_;
    COMMTIMEOUTS timeouts_{};
    bool dtr_ = true;
    bool rts_ = true;
    LineInput input_;
    std::optional<TtyCounts> counts_;
    DWORD errors_ = 0;
    DWORD mask_ = 0;
    DWORD remembered_ = 0;
    std::array<Operation, 3> operations_;
    std::array<Server, 3> servers_;

    bool lost_ = false;
    Deadline next_look_;
    DWORD pause_ = 0;
};

} // namespace tarnel
