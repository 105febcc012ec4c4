#include "customer_session.h"

#include "base/clock.h"
#include "base/running_amount.h"
#include "base/text.h"
#include "protocol/protocol.h"

#include <QFile>
#include <QHash>

namespace {
using Protocol::ConsoleWord;

QString argumentText(ConsoleWord word, const QByteArray& message) {
    return decodeText(Protocol::argumentOf(word, message));
}

// This boot of the machine: a saved up-time counter means nothing after another.
QByteArray bootId() {
    QFile f(QStringLiteral("/proc/sys/kernel/random/boot_id"));
    return f.open(QIODevice::ReadOnly) ? f.readAll().trimmed() : QByteArray();
}

const char* screenWord(CustomerSession::Screen screen) {
    switch (screen) {
    case CustomerSession::Screen::Running:
        return "running";
    case CustomerSession::Screen::Paused:
        return "paused";
    case CustomerSession::Screen::Free:
        return "free";
    default:
        return "locked";
    }
}
} // namespace

CustomerSession::CustomerSession(const Clock& clock, QObject* parent)
    : QObject(parent), clock_(clock) {
    thanks_.setSingleShot(true);
    thanks_.setInterval(ThanksMs);
    connect(&thanks_, &QTimer::timeout, this, [this] {
        if (screen_ == Screen::Thanks)
            setScreen(Screen::Locked);
    });
}

qint32 CustomerSession::elapsedMs() const {
    if (screen_ != Screen::Running)
        return bankedMs_;
    // Wrapping 32-bit arithmetic, like the counter itself.
    return qint32(quint32(bankedMs_) + (quint32(clock_.tickCount()) - quint32(resumedAt_)));
}

std::optional<qint32> CustomerSession::leftMs() const {
    if (!limitMinutes_)
        return std::nullopt;
    const double left = *limitMinutes_ * 60000.0 - double(elapsedMs());
    return qint32(qBound(0.0, left, double(INT32_MAX)));
}

QString CustomerSession::amountCaption() const {
    if (!hasRates_)
        return QString();
    return ::amountCaption(elapsedMs(), ratePerHour_, minimumAmount_);
}

void CustomerSession::setScreen(Screen screen) {
    screen_ = screen;
    if (screen == Screen::Thanks)
        thanks_.start();
    else
        thanks_.stop();
}

void CustomerSession::connectionLost() {
    if (screen_ == Screen::Running)
        stretchAtLoss_ = qint32(quint32(clock_.tickCount()) - quint32(resumedAt_));
}

void CustomerSession::bankNow() {
    bankedMs_ = elapsedMs();
}

QByteArray CustomerSession::state() const {
    QByteArray out;
    const auto put = [&](const char* key, const QByteArray& value) {
        out += key + QByteArray("=") + value + '\n';
    };
    put("boot", bootId());
    put("screen", screenWord(screen_));
    put("start", startTime_.toLatin1());
    put("banked", QByteArray::number(bankedMs_));
    put("resumed", QByteArray::number(resumedAt_));
    put("known", elapsedKnown_ ? "1" : "0");
    put("limit", limitMinutes_ ? QByteArray::number(*limitMinutes_) : QByteArray("U"));
    return out;
}

bool CustomerSession::restore(const QByteArray& state) {
    QHash<QByteArray, QByteArray> v;
    for (const QByteArray& line : state.split('\n')) {
        const qsizetype eq = line.indexOf('=');
        if (eq > 0)
            v.insert(line.left(eq), line.mid(eq + 1));
    }
    static const QHash<QByteArray, Screen> screens = {{"running", Screen::Running},
                                                      {"paused", Screen::Paused},
                                                      {"free", Screen::Free},
                                                      {"locked", Screen::Locked}};
    bool bankedOk = false, resumedOk = false;
    const qint32 banked = v.value("banked").toInt(&bankedOk);
    const qint32 resumed = v.value("resumed").toInt(&resumedOk);
    const QString start = QString::fromLatin1(v.value("start"));
    if (v.value("boot") != bootId() || !screens.contains(v.value("screen")) || !bankedOk ||
        !resumedOk || banked < 0 || start.size() > 8)
        return false;
    bool limitOk = false;
    const double limit = v.value("limit").toDouble(&limitOk);
    screen_ = screens.value(v.value("screen"));
    startTime_ = start;
    bankedMs_ = banked;
    resumedAt_ = resumed;
    elapsedKnown_ = v.value("known") == "1";
    if (limitOk && limit > 0)
        limitMinutes_ = limit;
    else
        limitMinutes_.reset();
    warned_ = false;
    // When the client stopped is not known: the console's figure comes with a resume.
    if (screen_ == Screen::Running)
        stretchAtLoss_ = -1;
    Q_EMIT changed();
    return true;
}

bool CustomerSession::apply(const QByteArray& message) {
    const auto word = Protocol::classifyConsole(message);
    if (!word)
        return false;
    const QString argument = argumentText(*word, message);
    switch (*word) {
    case ConsoleWord::StartMeter:
    case ConsoleWord::Pause:
    case ConsoleWord::Resume:
    case ConsoleWord::BankedTime:
    case ConsoleWord::Unlock:
    case ConsoleWord::Lock:
    case ConsoleWord::CloseMeter:
    case ConsoleWord::Idle:
        stretchAtLoss_.reset(); // the console has said where the session stands
        break;
    default:
        break;
    }
    switch (*word) {
    case ConsoleWord::StartMeter:
        // Every session starts open, with nothing banked; a limit comes with "TLMT ".
        startTime_ = argument.trimmed();
        bankedMs_ = 0;
        resumedAt_ = clock_.tickCount();
        elapsedKnown_ = true;
        limitMinutes_.reset();
        warned_ = false;
        setScreen(Screen::Running);
        break;
    case ConsoleWord::Pause:
        bankedMs_ = qint32(leadingNumber(argument));
        elapsedKnown_ = true;
        warned_ = false;
        setScreen(Screen::Paused);
        break;
    case ConsoleWord::PausedState:
        // Said on identification: the console paused the session when it lost this PC.
        // Its banked time is then the stretch that was running at the loss (earlier
        // stretches are dropped, by the console's own rule); a resume brings its figure.
        if (screen_ == Screen::Running && stretchAtLoss_ && *stretchAtLoss_ >= 0) {
            bankedMs_ = *stretchAtLoss_;
        } else if (screen_ == Screen::Running) {
            elapsedKnown_ = false;
        } else if (screen_ != Screen::Paused) {
            elapsedKnown_ = false;
        }
        stretchAtLoss_.reset();
        warned_ = false;
        setScreen(Screen::Paused);
        break;
    case ConsoleWord::Resume:
        if (screen_ == Screen::Running)
            bankNow();
        startTime_ = argument.trimmed();
        resumedAt_ = clock_.tickCount();
        setScreen(Screen::Running);
        break;
    case ConsoleWord::BankedTime:
        // Right after "PAUX ": the console's banked time replaces this PC's own count.
        bankedMs_ = qint32(leadingNumber(argument));
        resumedAt_ = clock_.tickCount();
        elapsedKnown_ = true;
        break;
    case ConsoleWord::TimeLimit: {
        const QString limit = argument.trimmed();
        bool ok = false;
        const double minutes = limit.toDouble(&ok);
        if (ok && minutes > 0)
            limitMinutes_ = minutes;
        else
            limitMinutes_.reset(); // "U": open time
        warned_ = false;
        break;
    }
    case ConsoleWord::Warn:
        if (warned_)
            return true; // the console repeats it every tick of that minute
        warned_ = true;
        break;
    case ConsoleWord::Unlock:
        setScreen(Screen::Free);
        break;
    case ConsoleWord::Lock:
        warned_ = false;
        setScreen(Screen::Locked);
        break;
    case ConsoleWord::CloseMeter:
        bankNow();
        warned_ = false;
        setScreen(Screen::Thanks);
        break;
    case ConsoleWord::Idle:
        if (screen_ != Screen::Thanks)
            setScreen(Screen::Locked);
        limitMinutes_.reset();
        break;
    case ConsoleWord::Rates:
        if (const auto rates = Protocol::RatesPayload::parse(argument)) {
            hasRates_ = true;
            ratePerHour_ = rates->ratePerHour;
            minimumAmount_ = Money::fromDouble(rates->minimumAmount);
            Q_EMIT ratesChanged();
        }
        return true;
    case ConsoleWord::Products: {
        QStringList items = Protocol::productItems(argument);
        // The console's answer when it has no list file.
        if (items == QStringList{QStringLiteral("None @ 0.00")})
            items.clear();
        if (items != products_) {
            products_ = items;
            Q_EMIT productsChanged();
        }
        return true;
    }
    default:
        return false;
    }
    Q_EMIT changed();
    return true;
}
