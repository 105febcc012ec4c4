#pragma once

#include <QPointer>
#include <QWidget>

class Console;
class FormHost;
class QAbstractItemModel;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;

// The message window (frmtxtv, "Message Archiver"): what terminals said and what
// happened to their connections, newest first; beside it, when the console's boxes
// give them, the notices of what went wrong. A line is read whole below the lists. The
// operator answers one terminal from the reply row.
class MessageWindow : public QWidget {
    Q_OBJECT
public:
    // `notices`: the list of notices to show beside the log, or none.
    MessageWindow(Console& console, QAbstractItemModel* notices, QWidget* parent = nullptr);

    Console& console() { return console_; }
    QSize sizeHint() const override;

private:
    QWidget* buildReplyRow();
    void reply();

    Console& console_;
    QPointer<QAbstractItemModel> notices_;
    QPlainTextEdit* txtWhole_ = nullptr;
    QComboBox* cmdPCn_ = nullptr;
    QLineEdit* txtrply_ = nullptr;
};
