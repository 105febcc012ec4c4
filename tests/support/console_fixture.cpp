#include "support/console_fixture.h"

#include "support/files.h"

Console& ConsoleFixture::open() {
    if (!console) {
        console = std::make_unique<Console>(clock, prompts, *folder);
        console->openStorage();
    }
    return *console;
}

Console& ConsoleFixture::start(const QByteArray& settings) {
    if (!settings.isNull())
        writeFile(QStringLiteral("TarvoQRB.INI"), settings);
    open().startUp(0, iniPath());
    return *console;
}

TerminalProbe& ConsoleFixture::probe() {
    if (!probe_) {
        probe_ = std::make_unique<TerminalProbe>(*console);
        probe_->openOtherLine();
    }
    return *probe_;
}

bool ConsoleFixture::writeFile(const QString& name, const QByteArray& content) {
    return ::writeFile(folder->file(name), content);
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
