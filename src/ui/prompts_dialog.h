#pragma once

#include "base/prompts.h"

#include <QPointer>

class Clock;
class ConsoleBoxDialog;
class QDialog;
class QLabel;
class QListWidget;
class QWidget;

// The boxes the operator sees. Questions are real message boxes; notices, which come
// from terminals and timers, go to one notices window that never waits and never
// multiplies, however many arrive.
class WidgetPrompts : public Prompts {
public:
    explicit WidgetPrompts(Clock& clock);
    ~WidgetPrompts() override;
    WidgetPrompts(const WidgetPrompts&) = delete;
    WidgetPrompts& operator=(const WidgetPrompts&) = delete;

    // The window the boxes belong to (the main window once it is up).
    void setParentWindow(QWidget* parent);

    Answer ask(const QString& text, const QString& title, Buttons buttons, Icon icon) override;
    void notice(const QString& text, const QString& title, Icon icon) override;
    QString consoleBox(const ConsoleBox& box) override;

    // The most notices the window keeps; older ones drop off the end.
    static constexpr int NoticeLimit = 200;

private:
    QDialog* noticeWindow();

    Clock& clock_;
    QPointer<QWidget> parent_;
    QPointer<QDialog> notices_;
    QPointer<QLabel> latest_;
    QPointer<QListWidget> noticeList_;
    QPointer<ConsoleBoxDialog> modeless_;
    qint32 raisedAt_ = 0;
};
