#pragma once

#include "base/prompts.h"

#include <QPointer>

#include <memory>

class Clock;
class ConsoleBoxDialog;
class QDialog;
class QLabel;
class QListView;
class QObject;
class QPlainTextEdit;
class QStandardItemModel;
class QWidget;

// The boxes the operator sees. Questions are real message boxes; notices, which come
// from terminals and timers, go to one list that never waits and never multiplies,
// however many arrive: read in a notices window of its own, or where a reader shows it.
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

    // The notices, newest first, one line each.
    QStandardItemModel& notices() { return *noticeModel_; }
    // While `reader` lives, it shows the notices (it watches the list for new ones) and
    // the notices window of their own stays shut.
    void setNoticeReader(QObject* reader) { reader_ = reader; }

private:
    QDialog* noticeWindow();

    Clock& clock_;
    QPointer<QWidget> parent_;
    QPointer<QDialog> notices_;
    QPointer<QLabel> latest_;
    QPointer<QListView> noticeList_;
    std::unique_ptr<QStandardItemModel> noticeModel_;
    QPointer<QObject> reader_;
    QPointer<QPlainTextEdit> noticeText_;
    QPointer<ConsoleBoxDialog> modeless_;
    qint32 raisedAt_ = 0;
};
