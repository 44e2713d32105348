#include "presenter/line.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QJsonDocument>
#include <array>
#include <cerrno>
#include <utility>

Line::Line(int descriptor, std::function<void(const QJsonObject&)> receive,
           std::function<void()> end)
    : descriptor_(descriptor), receive_(std::move(receive)), end_(std::move(end)),
      readable_(descriptor, QSocketNotifier::Read), writable_(descriptor, QSocketNotifier::Write) {
    writable_.setEnabled(false);
    QObject::connect(&readable_, &QSocketNotifier::activated, [this] { read(); });
    QObject::connect(&writable_, &QSocketNotifier::activated, [this] { write(); });
}

Line::~Line() {
    ::close(descriptor_);
}

qint64 Line::report(const char* verb, qint64 window, qint64 value, const QString& text) {
    const QJsonObject action{
        {"do", verb}, {"n", ++number_}, {"window", window}, {"value", value}, {"text", text}};
    outgoing_ += QJsonDocument(action).toJson(QJsonDocument::Compact) + '\n';
    write();
    return number_;
}

void Line::read() {
    std::array<char, 65536> block;
    const auto count = ::recv(descriptor_, block.data(), block.size(), MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    incoming_.append(block.data(), count > 0 ? count : 0);
    if (!take_lines() || count <= 0) {
        readable_.setEnabled(false);
        end_();
    }
}

/// False when there is a damaged one.
bool Line::take_lines() {
    qsizetype begin = 0;
    for (qsizetype end; (end = incoming_.indexOf('\n', begin)) >= 0; begin = end + 1) {
        const auto message = QJsonDocument::fromJson(incoming_.mid(begin, end - begin));
        if (!message.isObject()) {
            return false;
        }
        receive_(message.object());
    }
    incoming_.remove(0, begin);
    return true;
}

/// As much as goes; an end shows itself in reading.
void Line::write() {
    const auto count =
        ::send(descriptor_, outgoing_.data(), static_cast<std::size_t>(outgoing_.size()),
               MSG_DONTWAIT | MSG_NOSIGNAL);
    outgoing_.remove(0, count > 0 ? count : 0);
    writable_.setEnabled(!outgoing_.isEmpty() && (count >= 0 || errno == EAGAIN));
}
