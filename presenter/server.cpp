#include "presenter/server.h"

#include "platform/windows/presenter_wire.h"

#include <sys/socket.h>

#include <QCoreApplication>
#include <QTimer>
#include <cstring>

namespace wire = tarnel::wire;

Server::Server(int control, int application)
    : control_(control), readable_(control, QSocketNotifier::Read) {
    QObject::connect(&readable_, &QSocketNotifier::activated, [this] { receive(); });
    if (application >= 0) {
        application_ = std::make_unique<QSocketNotifier>(application, QSocketNotifier::Read);
        QObject::connect(application_.get(), &QSocketNotifier::activated,
                         [] { QCoreApplication::quit(); });
    }
}

/// One letter, perhaps with a descriptor.
void Server::receive() {
    char letter = 0;
    iovec data{&letter, 1};
    alignas(cmsghdr) char space[CMSG_SPACE(sizeof(int))] = {};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = space;
    message.msg_controllen = sizeof space;
    const auto count = ::recvmsg(control_, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    const cmsghdr* const header = count == 1 ? CMSG_FIRSTHDR(&message) : nullptr;
    if (count == 0) {
        readable_.setEnabled(false); // the screens may still serve their threads
        QCoreApplication::quit();
    } else if (header && header->cmsg_type == SCM_RIGHTS) {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
        add_screen(descriptor);
    } else if (letter == wire::ask_awake) {
        const std::string answer = std::string(wire::awake) + '\n';
        ::send(control_, answer.data(), answer.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    }
}

void Server::add_screen(int descriptor) {
    const auto place = screens_.emplace(screens_.end());
    *place = std::make_unique<Screen>(descriptor, [this, place] {
        // Later: the screen is what tells.
        QTimer::singleShot(0, [this, place] { screens_.erase(place); });
    });
}
