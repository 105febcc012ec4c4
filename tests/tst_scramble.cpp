// The scrambler that shows a password in the accounts window, and the runtime generator
// it reproduces.
#include "people/scramble.h"

#include <QtTest>

using namespace Qt::StringLiterals;

class ScrambleTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // Values every program of that runtime printed: the first draws after start, and
    // Rnd(-1), which is the same every time.
    void generatorKnownValues() {
        BasicRandom fresh;
        QCOMPARE(QString::number(fresh.rnd(), 'f', 7), u"0.7055475"_s);
        QCOMPARE(QString::number(fresh.rnd(), 'f', 7), u"0.5334240"_s);
        QCOMPARE(QString::number(fresh.rnd(0), 'f', 7), u"0.5334240"_s); // zero repeats
        BasicRandom again;
        QCOMPARE(QString::number(again.rnd(-1), 'f', 7), u"0.2240070"_s);
        QCOMPARE(QString::number(again.rnd(-1), 'f', 7), u"0.2240070"_s);
        // Randomize replaces only the seed's middle sixteen bits: 8.0 is 0x40200000 in its
        // upper half, so they become 0x0000 ^ 0x4020.
        const quint32 before = again.seed();
        again.randomize(8);
        QCOMPARE(again.seed() & 0xFFFF00u, 0x402000u);
        QCOMPARE(again.seed() & 0xFFu, before & 0xFFu);
    }

    void twiceGivesTheTextBack_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("key");
        QTest::newRow("password") << u"secret"_s << u"Lanterns"_s;
        QTest::newRow("accents and symbols") << u"Peña €5 ~!"_s << u"Lanterns"_s;
        QTest::newRow("long text") << QString(500, u'x') << u"Lanterns"_s;
        QTest::newRow("empty key") << u"secret"_s << QString();
        QTest::newRow("empty text") << QString() << u"Lanterns"_s;
    }
    void twiceGivesTheTextBack() {
        QFETCH(QString, text);
        QFETCH(QString, key);
        const QString once = scrambleText(text, key);
        QCOMPARE(once.size(), text.size());
        if (!text.isEmpty())
            QVERIFY(once != text);
        QCOMPARE(scrambleText(once, key), text);
    }

    // The key decides the scramble, and so does each character's place.
    void keyAndPlaceMatter() {
        QVERIFY(scrambleText(u"secret"_s, u"Lanterns"_s) !=
                scrambleText(u"secret"_s, u"Lantern"_s));
        const QString same = scrambleText(u"aaaa"_s, u"Lanterns"_s);
        QVERIFY(same.at(0) != same.at(1));
    }
};

QTEST_APPLESS_MAIN(ScrambleTest)
#include "tst_scramble.moc"
