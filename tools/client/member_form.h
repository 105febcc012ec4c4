#pragma once

#include <QString>
#include <QWidget>

#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;

// The member's log-in on the lock screen: member id, last name and first name. The
// console checks them against its register ("CHK") and starts the session, or refuses.
class MemberForm : public QWidget {
    Q_OBJECT
public:
    explicit MemberForm(QWidget* parent = nullptr);

    // The "CHK" payload for what was typed (id ":" LAST ", " FIRST ";" pc), or the reason
    // it cannot be sent, for the customer to read.
    struct Check {
        std::optional<QString> payload;
        QString refusal;
    };
    static Check payloadFor(const QString& id, const QString& lastName, const QString& firstName,
                            int pc);

    void setPc(int pc) { pc_ = pc; }
    // What happened to the last try, in words; `good` colours it as accepted.
    void showResult(const QString& text, bool good = false);
    void clear();
    void setScale(int unit);

Q_SIGNALS:
    // The customer asked to log in with this payload.
    void logInRequested(const QString& payload);

private:
    void submit();

    int pc_ = 0;
    QLineEdit* id_;
    QLineEdit* lastName_;
    QLineEdit* firstName_;
    QPushButton* logIn_;
    QLabel* result_;
    QLabel* title_;
};
