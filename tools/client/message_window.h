#pragma once

#include <QString>
#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

// The operator's last message ("TEXT ") and the customer's reply box ("TXT "). The lock
// screen holds one; while the PC is in use, a small window above the others holds another.
class OperatorMessagePanel : public QWidget {
    Q_OBJECT
public:
    explicit OperatorMessagePanel(QWidget* parent = nullptr);

    // A message from the operator, with the reply box.
    void showMessage(const QString& text);
    // A notice about this PC (no reply expected).
    void showNotice(const QString& text);
    // What became of the reply: "Sending…", "Delivered." or why it was not sent.
    void showReplyState(const QString& text, bool good);
    QString text() const;
    void setScale(int unit);

Q_SIGNALS:
    void replyRequested(const QString& text);

private:
    void submit();

    QLabel* heading_;
    QLabel* text_;
    QLineEdit* reply_;
    QPushButton* send_;
    QLabel* state_;
};

// The floating window for the operator's messages while the PC is in use.
class OperatorMessageWindow : public QWidget {
    Q_OBJECT
public:
    explicit OperatorMessageWindow(QWidget* parent = nullptr);
    OperatorMessagePanel& panel() { return *panel_; }

private:
    OperatorMessagePanel* panel_;
};
