#include "platform/desktop/screen_scale.h"

#include <QGuiApplication>
#include <QScreen>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace {

constexpr double Step = 0.25;
constexpr double LargestScale = 4;
/// A title bar and the edges, which the factor doesn't enlarge.
constexpr QSize Frame{4, 28};
/// For panels and title bar, where the free area isn't known.
constexpr int UnknownPanels = 64;
/// A display that hasn't told by then counts as one that can't.
constexpr int DisplayPatienceMs = 3000;

/// A window manager says which part of the screen its panels leave.
bool IsFreeAreaKnown()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr)
        return false;
    xcb_connection_t* display = x11->connection();
    const auto reply = [](auto* answer) {
        return std::unique_ptr<std::remove_pointer_t<decltype(answer)>, decltype(&std::free)>(answer, &std::free);
    };
    constexpr char Name[] = "_NET_WORKAREA";
    const auto atom =
        reply(xcb_intern_atom_reply(display, xcb_intern_atom(display, 1, sizeof Name - 1, Name), nullptr));
    if (atom == nullptr || atom->atom == XCB_ATOM_NONE)
        return false;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
    const auto area = reply(xcb_get_property_reply(
        display, xcb_get_property(display, 0, root, atom->atom, XCB_ATOM_CARDINAL, 0, 4), nullptr));
    return area != nullptr && area->type == XCB_ATOM_CARDINAL;
}

/// In the child: says how large the free area of the first screen is.
[[noreturn]] void TellScreen(int descriptor)
{
    int argc = 1;
    char name[] = "capture-station";
    char* argv[] = {name, nullptr};
    const QGuiApplication application(argc, argv);
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QSize whole = screen->size();
    const QSize room =
        IsFreeAreaKnown() ? screen->availableSize() : QSize(whole.width(), whole.height() - UnknownPanels);
    const bool isTold = write(descriptor, &room, sizeof room) == ssize_t(sizeof room);
    _exit(isTold ? 0 : 1);
}

/// Asked of the display by a child: an application that has been made keeps the factor that it was made with.
std::optional<QSize> FreeArea()
{
    int ends[2];
    if (pipe(ends) != 0)
        return std::nullopt;
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        TellScreen(ends[1]);
    }
    close(ends[1]);
    QSize room;
    pollfd answer{ends[0], POLLIN, 0};
    const bool isTold = child > 0 && poll(&answer, 1, DisplayPatienceMs) == 1 &&
                        read(ends[0], &room, sizeof room) == ssize_t(sizeof room);
    close(ends[0]);
    if (child > 0) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    return isTold ? std::optional(room) : std::nullopt;
}

} // namespace

double ScaleInside(const QString& wanted, QSize freeArea)
{
    const double named = wanted == "fit"_L1 ? LargestScale : wanted.toDouble();
    const auto fits = [&](double scale) {
        return LargestForm.width() * scale + Frame.width() <= freeArea.width() &&
               LargestForm.height() * scale + Frame.height() <= freeArea.height();
    };
    double scale = 1;
    while (scale + Step <= named && fits(scale + Step))
        scale += Step;
    return scale;
}

void SetScreenScale(const QString& wanted)
{
    // Two factors would multiply, and a desktop's own dots per inch would enlarge the texts alone.
    for (const char* name : {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_AUTO_SCREEN_SCALE_FACTOR"})
        qunsetenv(name);
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    qputenv("QT_FONT_DPI", "96");
    if (wanted.isEmpty() || wanted == "1"_L1)
        return;
    const std::optional<QSize> freeArea = FreeArea();
    const double scale = freeArea ? ScaleInside(wanted, *freeArea) : 1;
    if (scale > 1)
        qputenv("QT_SCALE_FACTOR", QByteArray::number(scale));
}
