// Logic folders depend downward only:
//   base -> protocol -> store -> server -> {billing, people} -> sales -> console
// A logic file that includes a header of a folder above it or beside it fails here.
// Windows (*_window, *_dialog, ui/, app/) may use any logic and are not read.
// The terminal programs (tools/terminal, tools/client) share only the protocol table and
// the base below it with the console.
#include <QDirIterator>
#include <QRegularExpression>
#include <QtTest>

namespace {

const QDir src(QStringLiteral(TARVO_SOURCE_DIR));

int rank(const QString& folder) {
    static const QHash<QString, int> ranks = {
        {"base", 0},    {"protocol", 1}, {"store", 2}, {"server", 3},
        {"billing", 4}, {"people", 4},   {"sales", 5}, {"console", 6},
    };
    return ranks.value(folder, -1);
}

QStringList sources(const QDir& root) {
    QStringList paths;
    for (QDirIterator it(root.path(), {"*.h", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
         it.hasNext();)
        paths << it.next();
    return paths;
}

// The includes of a file that name a folder ("server/x.h" through the include path, or
// "../../src/server/x.h"): where each is ("file:line includes name"), and that folder.
QList<std::pair<QString, QString>> includes(const QString& path, const QDir& root) {
    static const QRegularExpression include(
        QStringLiteral("^\\s*#\\s*include\\s+\"([^\"]+/[^\"]+)\""));
    QList<std::pair<QString, QString>> found;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        found.append({path + QStringLiteral(" cannot be read"), QStringLiteral("?")});
    for (int line = 1; !file.atEnd(); ++line) {
        const auto m = include.match(QString::fromUtf8(file.readLine()));
        if (!m.hasMatch())
            continue;
        QString target = m.captured(1);
        if (target.startsWith(QLatin1String("../")))
            target = src.relativeFilePath(QDir::cleanPath(QFileInfo(path).dir().filePath(target)));
        found.append({QStringLiteral("%1:%2 includes %3")
                          .arg(root.relativeFilePath(path))
                          .arg(line)
                          .arg(m.captured(1)),
                      target.section(QLatin1Char('/'), 0, 0)});
    }
    return found;
}

} // namespace

class LayeringTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void logicIncludesOnlyFoldersBelow() {
        const QRegularExpression window(QStringLiteral("_(window|dialog)\\.(h|cpp)$"));
        QStringList wrong;
        int files = 0;
        for (const QString& path : sources(src)) {
            const QString folder = src.relativeFilePath(path).section(QLatin1Char('/'), 0, 0);
            if (rank(folder) < 0 || window.match(path).hasMatch())
                continue;
            ++files;
            for (const auto& [where, target] : includes(path, src))
                if (target != folder && rank(target) >= rank(folder))
                    wrong << where;
        }
        QVERIFY2(files > 20, "the logic sources were not found");
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
    }

    // The terminal programs run on the café's PCs: of the console they include and link
    // only the protocol table and base (and the client, the terminal library), never SQL.
    void terminalProgramsUseOnlyProtocolAndBase_data() {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QStringList>("linkable");
        const QStringList common = {"tarvo_terminal", "tarvo_protocol", "tarvo_base",
                                    "Qt6::Core",      "Qt6::Network",   "Qt6::Gui"};
        QTest::newRow("tarvoqrb-terminal") << "terminal" << common;
        QTest::newRow("tarvoqrb-client")
            << "client" << common + QStringList{"tarvo_client", "Qt6::Widgets"};
    }
    void terminalProgramsUseOnlyProtocolAndBase() {
        QFETCH(QString, folder);
        QFETCH(QStringList, linkable);
        const QDir tools(QStringLiteral(TARVO_SOURCE_DIR "/../tools/") + folder);
        const QStringList srcFolders = src.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        QStringList wrong;
        const QStringList files = sources(tools);
        QVERIFY2(files.size() >= 4, "the program's sources were not found");
        for (const QString& path : files)
            for (const auto& [where, target] : includes(path, tools))
                if (srcFolders.contains(target) && target != "protocol" && target != "base")
                    wrong << where;

        // Nor does it link another of the console's libraries, or Qt SQL.
        QFile cmake(tools.filePath(QStringLiteral("CMakeLists.txt")));
        QVERIFY(cmake.open(QIODevice::ReadOnly | QIODevice::Text));
        const QRegularExpression library(QStringLiteral("\\b(tarvo_[a-z_]+|Qt6::[A-Za-z]+)"));
        for (auto links = library.globalMatch(QString::fromUtf8(cmake.readAll())); links.hasNext();)
            if (const QString name = links.next().captured(1); !linkable.contains(name))
                wrong << QStringLiteral("CMakeLists.txt links ") + name;
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
    }
};

QTEST_GUILESS_MAIN(LayeringTest)
#include "tst_layering.moc"
