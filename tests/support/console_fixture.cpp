#include "support/console_fixture.h"

#include <QFile>

void ConsoleFixture::writeSettings(const QByteArray& content) {
    QFile f(folder->file(QStringLiteral("TarvoQRB.INI")));
    f.open(QIODevice::WriteOnly);
    f.write(content);
}

Console& ConsoleFixture::start() {
    console = std::make_unique<Console>(clock, prompts, *folder);
    console->openStorage();
    console->startUp(0, iniPath());
    return *console;
}

void ConsoleFixture::exec(const QString& sql, const QVariantList& values) {
    Database db(*folder);
    DbSession s(db);
    s.run(sql, values);
}

QVariant ConsoleFixture::scalar(const QString& sql, const QVariantList& values) {
    Database db(*folder);
    DbSession s(db);
    auto q = s.run(sql, values);
    return q.next() ? q.value(0) : QVariant();
}
