// A Qt application hosts the library: its window goes on counting while one of the library's modal
// dialogs is open.

#include "platform/messages/host_loop.h"
#include "serial/PortConfiguration.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>

namespace {

/// The library's messages run in Qt's loop, and its nested loops sleep in it.
class LibraryInQt : public QObject {
  public:
    LibraryInQt() : notifier_(tarnel::message_descriptor(), QSocketNotifier::Read) {
        connect(&notifier_, &QSocketNotifier::activated, [] { tarnel::run_pending_messages(); });
        tarnel::set_host_wait({[](void*, int, int milliseconds) { wait(milliseconds); }, nullptr});
    }

    ~LibraryInQt() override { tarnel::set_host_wait({}); }

  private:
    /// The notifier ends this wait as well: then there is something to run.
    static void wait(int milliseconds) {
        QTimer limit;
        if (milliseconds >= 0) {
            limit.start(milliseconds);
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    QSocketNotifier notifier_;
};

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const LibraryInQt library;
    CComDeviceConfiguration port;

    QWidget window;
    auto* settings = new QLabel(port.GetInfoString().GetString());
    auto* edit = new QPushButton("Serial &port...");
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(settings);
    layout->addWidget(edit);
    QObject::connect(edit, &QPushButton::clicked, [&] {
        edit->setEnabled(false);
        port.Edit(0); // returns when the person has closed the dialog
        edit->setEnabled(true);
        settings->setText(port.GetInfoString().GetString());
    });

    QTimer timer;
    int tenths = 0;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        window.setWindowTitle(QString("Measuring for %1 s").arg(++tenths / 10.0, 0, 'f', 1));
    });
    timer.start(100);
    window.show();
    return QApplication::exec();
}
