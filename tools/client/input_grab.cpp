#include "input_grab.h"

#include <QGuiApplication>
#include <QWidget>

#ifdef TARVO_CLIENT_XCB
#include <QtGui/qguiapplication_platform.h>

#include <xcb/xcb.h>

#include <cstdlib>
#endif

namespace {
#ifdef TARVO_CLIENT_XCB
xcb_connection_t* x11Connection() {
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->connection() : nullptr;
}
#endif
} // namespace

InputGrab::InputGrab(QWidget* window, QObject* parent) : QObject(parent), window_(window) {
    retry_.setInterval(1000);
    connect(&retry_, &QTimer::timeout, this, &InputGrab::tryGrab);
}

InputGrab::~InputGrab() {
    release();
}

bool InputGrab::available() {
#ifdef TARVO_CLIENT_XCB
    return QGuiApplication::platformName() == QLatin1String("xcb") && x11Connection();
#else
    return false;
#endif
}

void InputGrab::hold() {
    wanted_ = true;
    if (!available())
        return;
    tryGrab();
    // Asked again every second: a menu or another program's grab that came and went
    // would otherwise have taken it away.
    retry_.start();
}

void InputGrab::release() {
    wanted_ = false;
    retry_.stop();
#ifdef TARVO_CLIENT_XCB
    if (held_) {
        if (xcb_connection_t* c = x11Connection()) {
            xcb_ungrab_keyboard(c, XCB_CURRENT_TIME);
            xcb_ungrab_pointer(c, XCB_CURRENT_TIME);
            xcb_flush(c);
        }
    }
#endif
    held_ = false;
}

bool InputGrab::tryGrab() {
#ifdef TARVO_CLIENT_XCB
    if (!wanted_ || !window_ || !window_->isVisible())
        return false;
    xcb_connection_t* c = x11Connection();
    if (!c)
        return false;
    const auto win = xcb_window_t(window_->winId());
    // Owner events: the client's own windows get their input as usual; everything that
    // would go to another program comes to the lock screen instead.
    auto* keyboard = xcb_grab_keyboard_reply(
        c, xcb_grab_keyboard(c, 1, win, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
        nullptr);
    const bool keys = keyboard && keyboard->status == XCB_GRAB_STATUS_SUCCESS;
    std::free(keyboard);
    const uint16_t events = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                            XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_ENTER_WINDOW |
                            XCB_EVENT_MASK_LEAVE_WINDOW;
    auto* pointer = xcb_grab_pointer_reply(c,
                                           xcb_grab_pointer(c, 1, win, events, XCB_GRAB_MODE_ASYNC,
                                                            XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE,
                                                            XCB_CURRENT_TIME),
                                           nullptr);
    const bool mouse = pointer && pointer->status == XCB_GRAB_STATUS_SUCCESS;
    std::free(pointer);
    held_ = keys && mouse;
    if (!held_) {
        // Half a grab is no lock: give back what was got, and try again whole.
        if (keys)
            xcb_ungrab_keyboard(c, XCB_CURRENT_TIME);
        if (mouse)
            xcb_ungrab_pointer(c, XCB_CURRENT_TIME);
        xcb_flush(c);
    }
    return held_;
#else
    return false;
#endif
}
