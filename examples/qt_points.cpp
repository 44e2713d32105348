// A Qt window that shows the points of a METROLEC machine: qt_points [PORT]. The library lives in
// Qt's loop; while one of its modal dialogs is open, the window goes on.

#include "platform/messages/host_loop.h"
#include "protocols/MetrolecProtocol.h"

#include <QApplication>
#include <QListWidget>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>

namespace {

/// The library's messages run in Qt's loop, and its nested loops sleep in it.
struct LibraryInQt {
    LibraryInQt() {
        QObject::connect(&notifier, &QSocketNotifier::activated,
                         [] { tarnel::run_pending_messages(); });
        tarnel::set_host_wait({[](void*, int, int milliseconds) { wait(milliseconds); }, nullptr});
    }

    ~LibraryInQt() { tarnel::set_host_wait({}); }

    /// The notifier ends this wait as well: then there is something to run.
    static void wait(int milliseconds) {
        QTimer limit;
        if (milliseconds >= 0) {
            limit.start(milliseconds);
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    QSocketNotifier notifier{tarnel::message_descriptor(), QSocketNotifier::Read};
};

/// Adds each point that it is told of to the list.
struct PointWindow final : CWnd {
    LRESULT WindowProc(UINT message, WPARAM what, LPARAM more) override {
        if (message == announced && what == _CMMProtocol::MEASURED_POINT) {
            const tarnel::SectionGuard guard(protocol.m_Lock);
            const __PointMMT& p = protocol.m_LastPoint;
            list.addItem(QString::asprintf("%d: %.3f  %.3f  %.3f mm", p.number, p.x, p.y, p.z));
            protocol.AcknowledgeLastPoint();
        }
        return CWnd::WindowProc(message, what, more);
    }

    const UINT announced = RegisterWindowMessageA("CMMProtocolMessage");
    QListWidget list;
    MPOProtocol protocol;
};

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const LibraryInQt library;
    QWidget window; // before its parts, which leave it when they end
    QPushButton edit("Serial &port...");
    PointWindow points;
    points.CreateEx(0, AfxRegisterWndClass(0), "", 0, RECT{}, nullptr, 0);
    points.protocol.Initialize(&points);
    QVBoxLayout layout(&window);
    layout.addWidget(&edit);
    layout.addWidget(&points.list);
    edit.connect(&edit, &QPushButton::clicked, [&] { points.protocol.EditProtocolParameters(); });
    QTimer timer;
    timer.start(100); // ms
    timer.connect(&timer, &QTimer::timeout, [&, tenths = 0]() mutable {
        window.setWindowTitle(QString("Measuring for %1 s").arg(++tenths / 10.0, 0, 'f', 1));
    });
    window.show();
    if (argc > 1) {
        points.protocol.m_Device.m_Configuration.SetPortName(argv[1]);
        points.protocol.Connect();
    }
    return QApplication::exec();
}
