#pragma once

#include "base/prompts.h"

#include <QPointer>

class Clock;
class ConsoleBoxDialog;
class QDialog;
class QLabel;
class QListView;
class QPlainTextEdit;
class QStandardItemModel;
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
    // A notice's line in the list and the latest line show at most this much; the whole
    // text shows below the list when its line is chosen.
    static constexpr int NoticeLineLength = 300;
    // The full text of a notice, kept with its line.
    static constexpr int FullTextRole = Qt::UserRole + 1;

private:
    QDialog* noticeWindow();

    Clock& clock_;
    QPointer<QWidget> parent_;
    QPointer<QDialog> notices_;
    QPointer<QLabel> latest_;
    QPointer<QListView> noticeList_;
    QPointer<QStandardItemModel> noticeModel_;
    QPointer<QPlainTextEdit> noticeText_;
    QPointer<ConsoleBoxDialog> modeless_;
    qint32 raisedAt_ = 0;
};
