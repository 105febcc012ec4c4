// Feeds arbitrary bytes to the console's message dispatcher, as a terminal could send
// them. Each input is split at '\n' into up to 16 messages. After every input the
// console must still hold only its own PCs, and no session row may name another PC.
#include "base/clock.h"
#include "base/prompts.h"
#include "console/console.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

namespace {
struct World {
    QTemporaryDir dir;
    ManualClock clock;
    SilentPrompts prompts;
    AppFolder folder{dir.path()};
    Console console{clock, prompts, folder};
    World() {
        QFile products(folder.file(QStringLiteral("Products.LST")));
        products.open(QIODevice::WriteOnly);
        products.write("Coffee @ 25.00\nPrint @ 5.00\n");
        products.close();
        console.openStorage();
        console.startUp(0, dir.filePath(QStringLiteral("odbc.ini")));
        DbSession s(console.database());
        s.run(QStringLiteral("INSERT INTO members (CID, LN, FN) VALUES (?, ?, ?)"),
              {QStringLiteral("ID-00001"), QStringLiteral("DELA CRUZ"), QStringLiteral("JUAN")});
    }
};

World* world = nullptr;
} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    static QCoreApplication app(*argc, *argv);
    world = new World;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Console& console = world->console;
    const QByteArray input(reinterpret_cast<const char*>(data), qsizetype(size));
    const QList<QByteArray> messages = input.split('\n');
    int n = 0;
    for (const QByteArray& m : messages) {
        if (m.isEmpty() || ++n > 16)
            continue;
        console.server().handleMessage(1, m);
        world->clock.advance(1000);
    }

    TerminalTable& table = console.terminals();
    if (table.count() != console.nofpc())
        std::abort();
    for (int p = 1; p <= table.count(); ++p)
        if (table.at(p).pcNumber != p)
            std::abort();
    {
        DbSession s(console.database());
        auto q =
            s.run(QStringLiteral("SELECT count(*) FROM templog WHERE aindex < 1 OR aindex > ?"),
                  {table.count()});
        if (q.next() && q.value(0).toInt() != 0)
            std::abort();
    }
    // Every PC busy: start over so that the session paths stay reachable.
    if (table.loggedCount() == table.count())
        table.init(table.count());
    return 0;
}
