#pragma once

#include "base/money.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <optional>

class Clock;

// The customer's session as this PC knows it from the console's messages: whether the
// PC is locked, running a session, paused, free or thanking the customer, and the
// session's figures. The running time follows the console's clock rule: the banked time
// plus the time since the last start or resume, read from this PC's up-time counter, so
// the meter keeps counting while the console is away.
class CustomerSession : public QObject {
    Q_OBJECT
public:
    enum class Screen {
        Locked,  // no session: the lock screen
        Running, // the meter
        Paused,  // the lock screen with the banked time
        Free,    // unlocked by the operator, no meter
        Thanks,  // the session was billed: the lock screen thanks the customer
    };
    // How long the thanks stay before the lock screen's usual words return.
    static constexpr int ThanksMs = 30000;

    explicit CustomerSession(const Clock& clock, QObject* parent = nullptr);

    // A message from the console; false when it says nothing about the session.
    bool apply(const QByteArray& message);

    // The console can no longer be reached. A running meter goes on counting (a console
    // that crashed takes the session up again where it stood), but a console that is
    // still there pauses a session whose connection it lost, and says so with a bare
    // "PAUS" when the PC is back: the time then stops where it stood at the loss.
    void connectionLost();

    // The session as a few lines of text, so that a client started again (after a crash,
    // or killed by a customer) goes on where it stood instead of locking a paying
    // customer out: the console says nothing to a PC that reconnects mid-session.
    QByteArray state() const;
    // Takes up a saved state; false, changing nothing, for one that is damaged or was
    // saved before this machine last started (its up-time counter began again).
    bool restore(const QByteArray& state);

    Screen screen() const { return screen_; }
    bool isLocked() const { return screen_ != Screen::Running && screen_ != Screen::Free; }
    // "HH:MM:SS", as the console sent it.
    QString startTime() const { return startTime_; }
    // Milliseconds of running time now.
    qint32 elapsedMs() const;
    // False when the PC learnt of a pause without its time (a restarted client).
    bool elapsedKnown() const { return elapsedKnown_; }
    // Minutes, or none for open time ("U").
    std::optional<double> limitMinutes() const { return limitMinutes_; }
    // What is left of the limit, never below 0; none without a limit.
    std::optional<qint32> leftMs() const;
    bool isWarned() const { return warned_; }

    bool hasRates() const { return hasRates_; }
    double ratePerHour() const { return ratePerHour_; }
    Money minimumAmount() const { return minimumAmount_; }
    // The running amount, exactly as the console's board shows it; empty without rates.
    QString amountCaption() const;
    // Items as the console sends them ("Coffee @ 25.00"); none when it has no list.
    const QStringList& products() const { return products_; }

Q_SIGNALS:
    // The screen or a figure changed by a message (not by time passing).
    void changed();
    void ratesChanged();
    void productsChanged();

private:
    void setScreen(Screen screen);
    void bankNow();

    const Clock& clock_;
    Screen screen_ = Screen::Locked;
    QString startTime_;
    qint32 bankedMs_ = 0;
    qint32 resumedAt_ = 0; // up-time counter at the last start or resume
    bool elapsedKnown_ = false;
    // The running stretch when the connection was lost; none while connected, -1 when
    // the moment is not known (a client started again).
    std::optional<qint32> stretchAtLoss_;
    std::optional<double> limitMinutes_;
    bool warned_ = false;
    bool hasRates_ = false;
    double ratePerHour_ = 0;
    Money minimumAmount_;
    QStringList products_;
    QTimer thanks_;
};
