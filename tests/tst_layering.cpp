// Logic folders depend downward only:
//   base -> protocol -> store -> server -> {billing, people} -> sales -> console
// A logic file that includes a header of a folder above it or beside it fails here.
// Windows (*_window, *_dialog, ui/, app/) may use any logic and are not read.
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
};

QTEST_GUILESS_MAIN(LayeringTest)
#include "tst_layering.moc"
