#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

class QWidget;

// Holds the keyboard and the pointer for the lock screen through the X server, so that
// no other window (the desktop, a panel, the window manager's shortcuts) can be reached.
// The lock screen's own controls still get their clicks and keys. Only on X11: on any
// other platform (Wayland, offscreen) it does nothing and says so.
class InputGrab : public QObject {
    Q_OBJECT
public:
    explicit InputGrab(QWidget* window, QObject* parent = nullptr);
    ~InputGrab() override;

    // Whether this platform lets a program grab the input at all.
    static bool available();

    // Grabs now, and again every second while held (the X server refuses while the
    // window is not yet shown or another program holds a grab, and a menu's own grab
    // ends ours).
    void hold();
    void release();
    bool isHeld() const { return held_; }

private:
    bool tryGrab();

    QPointer<QWidget> window_;
    bool wanted_ = false;
    bool held_ = false;
    QTimer retry_;
};
