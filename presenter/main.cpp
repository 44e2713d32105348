// tarnel-presenter shows the dialogs of one application. The layer starts it and speaks with it
// over standard input: see platform/windows/presenter_wire.h.

#include "platform/windows/presenter_wire.h"
#include "presenter/picture.h"
#include "presenter/server.h"

#include <sys/socket.h>
#include <unistd.h>
#include <xcb/xcb.h>

#include <QApplication>
#include <QFont>
#include <QLibraryInfo>
#include <QProxyStyle>
#include <QStyle>
#include <QTranslator>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" { // which the header of glibc 2.36 leaves out
#include <sys/pidfd.h>
}

namespace wire = tarnel::wire;

namespace {

constexpr int control = STDIN_FILENO;

/// The toolkit ends the program where there is no display.
bool has_display() {
    xcb_connection_t* const display = xcb_connect(nullptr, nullptr);
    const bool connected = xcb_connection_has_error(display) == 0;
    xcb_disconnect(display);
    return connected;
}

void tell(const std::string& line) {
    const std::string whole = line + '\n';
    ::send(control, whole.data(), whole.size(), MSG_NOSIGNAL);
}

/// A descriptor that tells of the application's end: others may hold the lines open.
int watch_application() {
    ucred application{};
    socklen_t size = sizeof application;
    const bool known = ::getsockopt(control, SOL_SOCKET, SO_PEERCRED, &application, &size) == 0;
    return known ? ::pidfd_open(application.pid, 0) : -1;
}

/// Boxes stand as close to their texts as the templates have room for.
class Style : public QProxyStyle {
  public:
    Style() : QProxyStyle("Fusion") {}

    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override {
        constexpr int spacing = 3;
        return metric == PM_CheckBoxLabelSpacing ? spacing
                                                 : QProxyStyle::pixelMetric(metric, option, widget);
    }
};

/// How dialogs look is fixed, and so are the sizes of their texts.
void dress() {
    QApplication::setStyle(new Style);
    QApplication::setPalette(QApplication::style()->standardPalette());
    QFont font("Liberation Sans");
    font.setPixelSize(11);
    QApplication::setFont(font);
}

/// The toolkit's notes on its surroundings are nothing that the application's user could act on.
void keep_quiet() {
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtCriticalMsg || type == QtFatalMsg) {
            std::fprintf(stderr, "tarnel-presenter: %s\n", qPrintable(text));
        }
    });
}

int draw(int count, char** arguments) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const QApplication application(count, arguments);
    dress();
    const QString verb = arguments[1];
    return verb == "--picture" && count > 2 ? draw_picture(arguments[2]) : measure_texts();
}

int serve(int count, char** arguments) {
    ::setenv("QT_QPA_PLATFORM", "xcb", 1);
    ::setenv("QT_QPA_PLATFORMTHEME", "none", 1); // what a desktop adds, takes its time to load
    const int application_end = watch_application();
    tell(wire::ready + std::to_string(::getpid()));
    QApplication application(count, arguments);
    QApplication::setQuitOnLastWindowClosed(false);
    dress();
    QTranslator translator;
    if (translator.load(QLocale(), "qtbase", "_",
                        QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QApplication::installTranslator(&translator);
    }
    const Server server(control, application_end);
    return QApplication::exec();
}

} // namespace

int main(int count, char** arguments) {
    keep_quiet();
    const std::string verb = count > 1 ? arguments[1] : "";
    if (verb == "--picture" || verb == "--measure") {
        return draw(count, arguments);
    }
    if (verb != "--serve") {
        std::fputs("tarnel-presenter is started by what shows dialogs.\n", stderr);
        return 2;
    }
    if (::fork() != 0) {
        return 0; // nobody's child from here on
    }
    if (!has_display()) {
        tell(wire::no_display);
        return 1;
    }
    return serve(count, arguments);
}
