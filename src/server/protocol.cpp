#include "server/protocol.h"

#include "base/format.h"

namespace {
QByteArray text(const QString& s) {
    return s.toUtf8();
}
QByteArray word(const char* w) {
    return QByteArray(w);
}
} // namespace

QByteArray Msg::ACPT() {
    return word("ACPT");
}
QByteArray Msg::SMTR(const QString& t) {
    return word("SMTR ") + text(t);
}
QByteArray Msg::PAUS(qint32 bk) {
    return word("PAUS ") + QByteArray::number(bk);
}
QByteArray Msg::PAUSBare() {
    return word("PAUS");
}
QByteArray Msg::PAUX(const QString& t) {
    return word("PAUX ") + text(t);
}
QByteArray Msg::SBTK(qint32 bk) {
    return word("SBTK @") + QByteArray::number(bk);
}
QByteArray Msg::TLMT(const QString& limit) {
    return word("TLMT ") + text(limit);
}
QByteArray Msg::WARN(const QString& t) {
    return word("WARN ") + text(t);
}
QByteArray Msg::FREE() {
    return word("FREE Dummy Text");
}
QByteArray Msg::XFRE() {
    return word("XFRE Dummy Text");
}
QByteArray Msg::CMTR() {
    return word("CMTR");
}
QByteArray Msg::OFPS() {
    return word("OFPS");
}
QByteArray Msg::LGOF() {
    return word("LGOF");
}
QByteArray Msg::RSTR() {
    return word("RSTR");
}
QByteArray Msg::PTAY() {
    return word("PTAY");
}
QByteArray Msg::TEXT(const QString& t) {
    return word("TEXT ") + text(t);
}
QByteArray Msg::RQPR() {
    return word("RQPR");
}
QByteArray Msg::KLPR(const QString& p) {
    return word("KLPR ") + text(p);
}
QByteArray Msg::SNPS() {
    return word("SNPS");
}
QByteArray Msg::SRPH(double rph, qint32 mint, double mina) {
    return word("SRPH ") + text(FormatNumber(rph, QStringLiteral("###.##")) + QLatin1Char(':') +
                                FormatNumber(double(mint), QStringLiteral("#.########")) +
                                QLatin1Char(';') + FormatNumber(mina, QStringLiteral("###.##")));
}
QByteArray Msg::MSGR() {
    return word("MSGR");
}
QByteArray Msg::INVD() {
    return word("INVD");
}
QByteArray Msg::LogSuccessful() {
    return word("Log Successful");
}
QByteArray Msg::FailedLog() {
    return word("Failed Log");
}
QByteArray Msg::FormLoggerLoaded() {
    return word("Form logger loaded");
}
QByteArray Msg::RAVP(const QString& list) {
    return word("RAVP ") + text(list);
}

const QStringList& Msg::ConsoleWords() {
    static const QStringList words = {
        QStringLiteral("Form logger loaded"),
        QStringLiteral("Log Successful"),
        QStringLiteral("Failed Log"),
        QStringLiteral("ACPT"),
        QStringLiteral("SMTR"),
        QStringLiteral("PAUS"),
        QStringLiteral("PAUX"),
        QStringLiteral("SBTK"),
        QStringLiteral("TLMT"),
        QStringLiteral("WARN"),
        QStringLiteral("FREE"),
        QStringLiteral("XFRE"),
        QStringLiteral("CMTR"),
        QStringLiteral("OFPS"),
        QStringLiteral("LGOF"),
        QStringLiteral("RSTR"),
        QStringLiteral("PTAY"),
        QStringLiteral("TEXT"),
        QStringLiteral("RQPR"),
        QStringLiteral("KLPR"),
        QStringLiteral("SNPS"),
        QStringLiteral("SRPH"),
        QStringLiteral("MSGR"),
        QStringLiteral("INVD"),
        QStringLiteral("RAVP"),
    };
    return words;
}

const QStringList& Msg::TerminalCommands() {
    static const QStringList commands = {
        QStringLiteral("Loa"), QStringLiteral("LOG"), QStringLiteral("AIP"), QStringLiteral("RTS"),
        QStringLiteral("CHK"), QStringLiteral("TXT"), QStringLiteral("PLS"), QStringLiteral("EMT"),
        QStringLiteral("APL"), QStringLiteral("BM6"),
    };
    return commands;
}

bool LogInPayload::parse(const QString& payload, LogInPayload* out) {
    const qsizetype colon = payload.indexOf(QLatin1Char(':'));
    const qsizetype semi = payload.indexOf(QLatin1Char(';'));
    if (colon < 0 || semi < 0 || semi < colon)
        return false;
    out->id = payload.left(colon);
    out->name = payload.mid(colon + 1, semi - colon - 1);
    out->pcText = payload.mid(semi + 1);
    return true;
}
