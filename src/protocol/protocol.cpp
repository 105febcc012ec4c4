#include "protocol/protocol.h"

#include "base/format.h"

#include <QRegularExpression>

#include <array>

namespace Protocol {
namespace {

using T = TerminalWord;
using C = ConsoleWord;

constexpr std::array<WordInfo<TerminalWord>, 10> TerminalTable{{
    {T::LogOnDialog, "Loa", "Loa", Shape::Bare},
    {T::LogIn, "LOG", "LOG ", Shape::LogIn},
    {T::Identify, "AIP", "AIP", Shape::Number},
    {T::Rates, "RTS", "RTS", Shape::Bare},
    {T::CheckMember, "CHK", "CHK ", Shape::LogIn},
    {T::Text, "TXT", "TXT ", Shape::Text},
    {T::Products, "PLS", "PLS", Shape::Bare},
    {T::Alert, "EMT", "EMT ", Shape::Text},
    {T::Processes, "APL", "APL ", Shape::Items},
    {T::Snapshot, "BM6", "BM6", Shape::Binary},
}};

constexpr std::array<WordInfo<ConsoleWord>, 26> ConsoleTable{{
    {C::Accept, "ACPT", "ACPT", Shape::Bare},
    {C::StartMeter, "SMTR", "SMTR ", Shape::Time},
    {C::Pause, "PAUS", "PAUS ", Shape::Number},
    {C::PausedState, "PAUS", "PAUS", Shape::Bare},
    {C::Resume, "PAUX", "PAUX ", Shape::Time},
    {C::BankedTime, "SBTK", "SBTK @", Shape::Number},
    {C::TimeLimit, "TLMT", "TLMT ", Shape::Text},
    {C::Warn, "WARN", "WARN ", Shape::Text},
    {C::Unlock, "FREE", "FREE ", Shape::Text},
    {C::Lock, "XFRE", "XFRE ", Shape::Text},
    {C::CloseMeter, "CMTR", "CMTR", Shape::Bare},
    {C::Idle, "OFPS", "OFPS", Shape::Bare},
    {C::LogOff, "LGOF", "LGOF", Shape::Bare},
    {C::Restart, "RSTR", "RSTR", Shape::Bare},
    {C::ShutDown, "PTAY", "PTAY", Shape::Bare},
    {C::Text, "TEXT", "TEXT ", Shape::Text},
    {C::RequestProcesses, "RQPR", "RQPR", Shape::Bare},
    {C::KillProcess, "KLPR", "KLPR ", Shape::Text},
    {C::RequestSnapshot, "SNPS", "SNPS", Shape::Bare},
    {C::Rates, "SRPH", "SRPH ", Shape::Text},
    {C::TextReceived, "MSGR", "MSGR", Shape::Bare},
    {C::InvalidMember, "INVD", "INVD", Shape::Bare},
    {C::LogSuccessful, "Log Successful", "Log Successful", Shape::Bare},
    {C::FailedLog, "Failed Log", "Failed Log", Shape::Bare},
    {C::FormLoggerLoaded, "Form logger loaded", "Form logger loaded", Shape::Bare},
    {C::Products, "RAVP", "RAVP ", Shape::ProductList},
}};

// The tables list each word at the place of its enumerator, so a look-up is an index.
constexpr bool inEnumOrder() {
    for (size_t i = 0; i < TerminalTable.size(); ++i)
        if (size_t(TerminalTable[i].word) != i)
            return false;
    for (size_t i = 0; i < ConsoleTable.size(); ++i)
        if (size_t(ConsoleTable[i].word) != i)
            return false;
    return true;
}
static_assert(inEnumOrder());

} // namespace

std::span<const WordInfo<TerminalWord>> terminalWords() {
    return TerminalTable;
}

std::span<const WordInfo<ConsoleWord>> consoleWords() {
    return ConsoleTable;
}

const WordInfo<TerminalWord>& info(TerminalWord word) {
    return TerminalTable[size_t(word)];
}

const WordInfo<ConsoleWord>& info(ConsoleWord word) {
    return ConsoleTable[size_t(word)];
}

std::optional<TerminalWord> classify(QByteArrayView message) {
    const QByteArrayView command = message.first(qMin<qsizetype>(3, message.size()));
    for (const auto& w : TerminalTable)
        if (command == w.text)
            return w.word;
    return std::nullopt;
}

std::optional<ConsoleWord> classifyConsole(QByteArrayView message) {
    for (const auto& w : ConsoleTable) {
        const bool match =
            w.shape == Shape::Bare ? message == w.prefix : message.startsWith(w.prefix);
        if (match)
            return w.word;
    }
    return std::nullopt;
}

QByteArray argumentOf(ConsoleWord word, QByteArrayView message) {
    const QByteArrayView prefix = info(word).prefix;
    if (!message.startsWith(prefix))
        return QByteArray();
    return message.sliced(prefix.size()).toByteArray();
}

QByteArray message(ConsoleWord word, QByteArrayView argument) {
    return info(word).prefix.toByteArray() + argument.toByteArray();
}

QByteArray message(TerminalWord word, QByteArrayView argument) {
    return info(word).prefix.toByteArray() + argument.toByteArray();
}

QString payloadOf(const QString& message) {
    return message.mid(4);
}

std::optional<LogInPayload> LogInPayload::parse(const QString& payload) {
    const qsizetype colon = payload.indexOf(QLatin1Char(':'));
    const qsizetype semi = payload.indexOf(QLatin1Char(';'));
    if (colon < 0 || semi < 0 || semi < colon)
        return std::nullopt;
    return LogInPayload{payload.left(colon), payload.mid(colon + 1, semi - colon - 1),
                        payload.mid(semi + 1)};
}

std::optional<RatesPayload> RatesPayload::parse(const QString& payload) {
    static const QRegularExpression shape(
        QStringLiteral("^\\s*(\\d*\\.?\\d*)\\s*:\\s*(\\d*\\.?\\d*)\\s*;\\s*(\\d*\\.?\\d*)\\s*$"));
    const auto m = shape.match(payload);
    if (!m.hasMatch())
        return std::nullopt;
    double values[3] = {};
    for (int i = 0; i < 3; ++i) {
        QString text = m.captured(i + 1);
        if (text.isEmpty())
            return std::nullopt;
        // The masks write a whole number with its point ("20."), a fraction without its
        // leading zero (".5"), and zero as the point alone.
        if (text.startsWith(QLatin1Char('.')))
            text.prepend(QLatin1Char('0'));
        if (text.endsWith(QLatin1Char('.')))
            text.chop(1);
        bool ok = false;
        values[i] = text.toDouble(&ok);
        if (!ok)
            return std::nullopt;
    }
    return RatesPayload{values[0], values[1], values[2]};
}

QStringList productItems(const QString& payload) {
    QString list = payload;
    if (list.endsWith(QLatin1String("End")))
        list.chop(3);
    QStringList items;
    for (const QString& item : list.split(QLatin1Char(';')))
        if (!item.trimmed().isEmpty())
            items << item.trimmed();
    return items;
}

} // namespace Protocol

namespace Msg {
namespace {
using Protocol::ConsoleWord;
using Protocol::TerminalWord;

QByteArray say(ConsoleWord word, const QString& argument = {}) {
    return Protocol::message(word, argument.toUtf8());
}
QByteArray say(TerminalWord word, const QString& argument = {}) {
    return Protocol::message(word, argument.toUtf8());
}
QByteArray number(qint32 value) {
    return QByteArray::number(value);
}
const QString DummyText = QStringLiteral("Dummy Text");
} // namespace

QByteArray accept() {
    return say(ConsoleWord::Accept);
}
QByteArray startMeter(const QString& startTime) {
    return say(ConsoleWord::StartMeter, startTime);
}
QByteArray pause(qint32 bankedMs) {
    return Protocol::message(ConsoleWord::Pause, number(bankedMs));
}
QByteArray pausedState() {
    return say(ConsoleWord::PausedState);
}
QByteArray resume(const QString& startTime) {
    return say(ConsoleWord::Resume, startTime);
}
QByteArray bankedTime(qint32 bankedMs) {
    return Protocol::message(ConsoleWord::BankedTime, number(bankedMs));
}
QByteArray timeLimit(const QString& limit) {
    return say(ConsoleWord::TimeLimit, limit);
}
QByteArray warn(const QString& text) {
    return say(ConsoleWord::Warn, text);
}
QByteArray unlock() {
    return say(ConsoleWord::Unlock, DummyText);
}
QByteArray lock() {
    return say(ConsoleWord::Lock, DummyText);
}
QByteArray closeMeter() {
    return say(ConsoleWord::CloseMeter);
}
QByteArray idle() {
    return say(ConsoleWord::Idle);
}
QByteArray logOff() {
    return say(ConsoleWord::LogOff);
}
QByteArray restart() {
    return say(ConsoleWord::Restart);
}
QByteArray shutDown() {
    return say(ConsoleWord::ShutDown);
}
QByteArray text(const QString& text) {
    return say(ConsoleWord::Text, text);
}
QByteArray requestProcesses() {
    return say(ConsoleWord::RequestProcesses);
}
QByteArray killProcess(const QString& name) {
    return say(ConsoleWord::KillProcess, name);
}
QByteArray requestSnapshot() {
    return say(ConsoleWord::RequestSnapshot);
}
QByteArray rates(double ratePerHour, qint32 minimumMinutes, double minimumAmount) {
    return say(ConsoleWord::Rates,
               formatNumber(ratePerHour, QStringLiteral("###.##")) + QLatin1Char(':') +
                   formatNumber(double(minimumMinutes), QStringLiteral("#.########")) +
                   QLatin1Char(';') + formatNumber(minimumAmount, QStringLiteral("###.##")));
}
QByteArray textReceived() {
    return say(ConsoleWord::TextReceived);
}
QByteArray invalidMember() {
    return say(ConsoleWord::InvalidMember);
}
QByteArray logSuccessful() {
    return say(ConsoleWord::LogSuccessful);
}
QByteArray failedLog() {
    return say(ConsoleWord::FailedLog);
}
QByteArray formLoggerLoaded() {
    return say(ConsoleWord::FormLoggerLoaded);
}
QByteArray products(const QString& list) {
    return say(ConsoleWord::Products, list);
}

QByteArray identify(int pc) {
    return Protocol::message(TerminalWord::Identify, QByteArray::number(pc));
}
QByteArray requestLogOnDialog() {
    return say(TerminalWord::LogOnDialog);
}
QByteArray logIn(const QString& payload) {
    return say(TerminalWord::LogIn, payload);
}
QByteArray checkMember(const QString& payload) {
    return say(TerminalWord::CheckMember, payload);
}
QByteArray requestRates() {
    return say(TerminalWord::Rates);
}
QByteArray textToConsole(const QString& text) {
    return say(TerminalWord::Text, text);
}
QByteArray requestProducts() {
    return say(TerminalWord::Products);
}
QByteArray alert(const QString& text) {
    return say(TerminalWord::Alert, text);
}
QByteArray processList(const QStringList& items) {
    QByteArray list;
    for (const QString& item : items)
        list += item.toUtf8() + ';';
    return Protocol::message(TerminalWord::Processes, list);
}
} // namespace Msg
