// Logic folders depend downward only:
//   base -> protocol -> store -> server -> {billing, people} -> sales -> console
// A logic file that includes a header of a folder above it or beside it fails here.
// Windows (*_window, *_dialog, ui/, app/) may use any logic and are not read.
// The terminal program (tools/terminal) shares only the protocol table and the base
// below it with the console.
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

class LayeringTest : public QObject {
    Q_OBJECT

    static int rank(const QString& folder) {
        static const QHash<QString, int> ranks = {
            {"base", 0},    {"protocol", 1}, {"store", 2}, {"server", 3},
            {"billing", 4}, {"people", 4},   {"sales", 5}, {"console", 6},
        };
        return ranks.value(folder, -1);
    }

private Q_SLOTS:
    void logicIncludesOnlyFoldersBelow() {
        const QDir src(QStringLiteral(TARVO_SOURCE_DIR));
        const QRegularExpression include(QStringLiteral("^\\s*#\\s*include\\s+\"([a-z_]+)/"));
        const QRegularExpression window(QStringLiteral("_(window|dialog)\\.(h|cpp)$"));
        QStringList wrong;
        int files = 0;
        QDirIterator it(src.path(), {"*.h", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            const QString folder = src.relativeFilePath(path).section(QLatin1Char('/'), 0, 0);
            if (rank(folder) < 0 || window.match(path).hasMatch())
                continue;
            ++files;
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
            int line = 0;
            while (!file.atEnd()) {
                ++line;
                const auto m = include.match(QString::fromUtf8(file.readLine()));
                if (!m.hasMatch())
                    continue;
                const QString target = m.captured(1);
                if (target != folder && rank(target) >= rank(folder))
                    wrong << QStringLiteral("%1:%2 includes %3/")
                                 .arg(src.relativeFilePath(path))
                                 .arg(line)
                                 .arg(target);
            }
        }
        QVERIFY2(files > 20, "the logic sources were not found");
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
    }

    // The terminal program runs on the café's PCs: of the console it includes and links
    // only the protocol table and base.
    void terminalProgramUsesOnlyProtocolAndBase() {
        const QDir src(QStringLiteral(TARVO_SOURCE_DIR));
        const QDir tools(QStringLiteral(TARVO_SOURCE_DIR "/../tools/terminal"));
        const QStringList srcFolders = src.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        const QStringList allowed = {QStringLiteral("protocol"), QStringLiteral("base")};
        const QRegularExpression include(QStringLiteral("^\\s*#\\s*include\\s+\"([^\"]+)\""));
        QStringList wrong;
        int files = 0;
        QDirIterator it(tools.path(), {"*.h", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            ++files;
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
            int line = 0;
            while (!file.atEnd()) {
                ++line;
                const auto m = include.match(QString::fromUtf8(file.readLine()));
                if (!m.hasMatch())
                    continue;
                // "server/x.h" through the include path, or "../../src/server/x.h".
                QString target = m.captured(1);
                if (target.startsWith(QLatin1String("../")))
                    target = src.relativeFilePath(
                        QDir::cleanPath(QFileInfo(path).dir().filePath(target)));
                const QString folder = target.section(QLatin1Char('/'), 0, 0);
                if (target.contains(QLatin1Char('/')) && srcFolders.contains(folder) &&
                    !allowed.contains(folder))
                    wrong << QStringLiteral("%1:%2 includes %3")
                                 .arg(tools.relativeFilePath(path))
                                 .arg(line)
                                 .arg(m.captured(1));
            }
        }
        QVERIFY2(files >= 4, "the terminal program's sources were not found");

        // Nor does it link another of the console's libraries, or Qt SQL or Widgets.
        QFile cmake(tools.filePath(QStringLiteral("CMakeLists.txt")));
        QVERIFY(cmake.open(QIODevice::ReadOnly | QIODevice::Text));
        const QString text = QString::fromUtf8(cmake.readAll());
        const QRegularExpression library(QStringLiteral("\\b(tarvo_[a-z_]+|Qt6::[A-Za-z]+)"));
        const QStringList linkable = {"tarvo_terminal", "tarvo_protocol", "tarvo_base",
                                      "Qt6::Core",      "Qt6::Network",   "Qt6::Gui"};
        for (auto links = library.globalMatch(text); links.hasNext();) {
            const QString name = links.next().captured(1);
            if (!linkable.contains(name))
                wrong << QStringLiteral("CMakeLists.txt links ") + name;
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
    }
};

QTEST_GUILESS_MAIN(LayeringTest)
#include "tst_layering.moc"
