#pragma once

#include "presenter/screen.h"

#include <QSocketNotifier>
#include <list>

/// Serves one application over its control line (presenter_wire.h), and ends this program with it.
class Server {
  public:
    /// `control` stays open as long as the program runs; `application` tells, by becoming readable,
    /// that the application has ended, if it is none of the descriptors that tell nothing (-1).
    Server(int control, int application);

  private:
    void receive();
    void add_screen(int descriptor);

    const int control_;
    QSocketNotifier readable_;
    std::unique_ptr<QSocketNotifier> application_;
    std::list<std::unique_ptr<Screen>> screens_;
};
