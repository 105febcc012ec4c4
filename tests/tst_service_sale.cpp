// The service sale (NewSrv), opened from today's sales window and driven through its
// boxes: how the total follows the price and quantity (two ways, on purpose), the row a
// sale writes, and today's window showing it at once.
#include "support/frame_fixture.h"

#include <QSqlRecord>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

class ServiceSaleTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;

    Console& console() { return *fx->console; }
    QDialog* sale() {
        for (auto* d : fx->frame->findChildren<QDialog*>(u"NewSrv"_s))
            if (d->isVisible())
                return d;
        return nullptr;
    }
    template <typename T = QLineEdit> T* field(const QString& name) {
        return sale()->findChild<T*>(name);
    }
    QString text(const QString& name) { return field(name)->text(); }
    QDialog* openSale() {
        fx->frame->action(u"mnuEarn"_s)->trigger();
        fx->frame->findChild<QWidget*>(u"ASlsSrv"_s)->findChild<QPushButton*>(u"Addsrv"_s)->click();
        return sale();
    }
    void choose(const QString& description) {
        auto* combo = field<QComboBox>(u"cmbSrvc"_s);
        const int index = combo->findText(description);
        QVERIFY2(index >= 0, qPrintable(description));
        combo->setCurrentIndex(index);
        Q_EMIT combo->activated(index); // as the operator picks it, even when it is shown already
    }
    // Types into a box the way the operator does: the old text selected and replaced.
    void type(const QString& name, const QString& keys) {
        QLineEdit* box = field(name);
        box->setFocus();
        box->selectAll();
        if (keys.isEmpty())
            QTest::keyClick(box, Qt::Key_Delete);
        else
            QTest::keyClicks(box, keys);
    }
    // Steps such as "qty 3", "price 12.50", "choose Binding", "or 000123".
    void run(const QStringList& steps) {
        for (const QString& step : steps) {
            const QString what = step.section(u' ', 0, 0);
            const QString value = step.section(u' ', 1);
            if (what == u"choose"_s)
                choose(value);
            else if (what == u"qty"_s)
                type(u"txtQty"_s, value);
            else if (what == u"price"_s)
                type(u"txtamnt"_s, value);
            else if (what == u"or"_s)
                type(u"txtor"_s, value);
            else
                QFAIL(qPrintable(u"no step "_s + step));
        }
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"Cashier"_s));
        fx->exec(u"INSERT INTO services (Description, Amount) VALUES ('Print', 25), "
                 "('Binding', 1250), ('Kid''s scan', 12.5)"_s);
        console().rates().loadServices(console().database());
        fx->prompts.clear();
    }
    void cleanup() { fx.reset(); }

    void opensOnTheFirstService() {
        QVERIFY(openSale());
        // The catalogue in description order, in the chooser and the list.
        auto* combo = field<QComboBox>(u"cmbSrvc"_s);
        QCOMPARE(combo->count(), 3);
        QCOMPARE(combo->currentText(), u"Binding"_s);
        auto* list = field<QTreeWidget>(u"lstsrv"_s);
        QStringList rows;
        for (int i = 0; i < list->topLevelItemCount(); ++i)
            rows << list->topLevelItem(i)->text(0) + u'=' + list->topLevelItem(i)->text(1);
        QCOMPARE(rows, (QStringList{"Binding=1,250.00", "Kid's scan=12.50", "Print=25.00"}));
        QCOMPARE(sale()->findChild<QLabel*>(u"lbldate"_s)->text(), u"DATE: 11/15/2026"_s);
        QCOMPARE(text(u"txtamnt"_s), u"1,250.00"_s);
        QCOMPARE(text(u"txtQty"_s), u"1"_s);
        QCOMPARE(text(u"txttamnt"_s), u"1,250.00"_s);
    }

    void totalFollowsTheBoxes_data() {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("price");
        QTest::addColumn<QString>("total");
        QTest::newRow("quantity 3 at 25")
            << QStringList{"choose Print", "qty 3"} << u"25.00"_s << u"75.00"_s;
        QTest::newRow("1,250 at quantity 2")
            << QStringList{"qty 2", "choose Binding"} << u"1,250.00"_s << u"2,500.00"_s;
        // Edited, the grouped price box counts as its first digit.
        QTest::newRow("then quantity 3")
            << QStringList{"qty 2", "choose Binding", "qty 3"} << u"1,250.00"_s << u"3.00"_s;
        QTest::newRow("chosen again, worked out right")
            << QStringList{"qty 2", "choose Binding", "qty 3", "choose Binding"} << u"1,250.00"_s
            << u"3,750.00"_s;
        QTest::newRow("price typed")
            << QStringList{"choose Print", "price 12.75", "qty 4"} << u"12.75"_s << u"51.00"_s;
        QTest::newRow("price typed with a separator")
            << QStringList{"choose Print", "price 2,000", "qty 4"} << u"2,000"_s << u"8.00"_s;
        QTest::newRow("empty quantity")
            << QStringList{"choose Print", "qty "} << u"25.00"_s << u"0.00"_s;
        QTest::newRow("letters") << QStringList{"choose Print", "qty abc"} << u"25.00"_s
                                 << u"0.00"_s;
        QTest::newRow("quantity with a tail")
            << QStringList{"choose Kid's scan", "qty 3pcs"} << u"12.50"_s << u"37.50"_s;
    }
    void totalFollowsTheBoxes() {
        QFETCH(QStringList, steps);
        QFETCH(QString, price);
        QFETCH(QString, total);
        QVERIFY(openSale());
        run(steps);
        QCOMPARE(text(u"txtamnt"_s), price);
        QCOMPARE(text(u"txttamnt"_s), total);
        QCOMPARE(fx->prompts.texts(), QStringList());
    }

    void saveWritesTheServiceRow_data() {
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("row");   // Orno|Amount|rdesc|subamnt|qty
        QTest::addColumn<QString>("shown"); // today's services grid: OR, description, qty, amount
        QTest::newRow("2,500.00 is stored as 2500, the price as its text")
            << QStringList{"or 123", "qty 2", "choose Binding"} << u"123|2500|Binding|1,250.00|2"_s
            << u"123|Binding|2|2,500.00"_s;
        QTest::newRow("no receipt number is 0") << QStringList{"choose Print", "qty 3"}
                                                << u"0|75|Print|25.00|3"_s << u"0|Print|3|75.00"_s;
        QTest::newRow("receipt number read up to its first letter")
            << QStringList{"or 0042-B", "choose Print"} << u"42|25|Print|25.00|1"_s
            << u"42|Print|1|25.00"_s;
        QTest::newRow("an empty quantity is 0")
            << QStringList{"choose Print", "qty "} << u"0|0|Print|25.00|0"_s << u"0|Print|0|0.00"_s;
        QTest::newRow("an apostrophe in the service")
            << QStringList{"choose Kid's scan", "qty 2"} << u"0|25|Kid's scan|12.50|2"_s
            << u"0|Kid's scan|2|25.00"_s;
        QTest::newRow("the total as shown, after an edit")
            << QStringList{"qty 2", "choose Binding", "qty 3"} << u"0|3|Binding|1,250.00|3"_s
            << u"0|Binding|3|3.00"_s;
    }
    void saveWritesTheServiceRow() {
        QFETCH(QStringList, steps);
        QFETCH(QString, row);
        QFETCH(QString, shown);
        QVERIFY(openSale());
        run(steps);
        field<QPushButton>(u"cmdsave"_s)->click();
        QCOMPARE(fx->prompts.texts(), QStringList{"Service has been saved"});
        QCOMPARE(fx->prompts.last()->title, u"Saved"_s);
        QCOMPARE(fx->prompts.last()->icon, Prompts::Icon::Information);
        QVERIFY(!sale());

        Database db(*fx->folder);
        DbSession s(db);
        auto q = s.run(u"SELECT Orno, Amount, rdesc, subamnt, qty, rtype, Rdate, CID, TID, StartT, "
                       "EndT, Tcons FROM TmpRvnD"_s);
        QVERIFY(q.next());
        QStringList values;
        for (int i = 0; i < 5; ++i)
            values << q.value(i).toString();
        QCOMPARE(values.join(u'|'), row);
        QCOMPARE(q.value(5).toString(), u"SERVICE"_s);
        QCOMPARE(q.value(6).toDate(), QDate(2026, 11, 15));
        for (int i = 7; i < 12; ++i) // the rental columns stay empty
            QVERIFY2(q.value(i).isNull(), qPrintable(q.record().fieldName(i)));
        QVERIFY(!q.next());

        // Today's window shows the sale at once, without waiting for its timer.
        auto* grid =
            fx->frame->findChild<QWidget*>(u"ASlsSrv"_s)->findChild<QTableView*>(u"DBGrid2"_s);
        QStringList cells;
        for (int c = 0; c < 4; ++c)
            cells << grid->model()->index(0, c).data().toString();
        QCOMPARE(cells.join(u'|'), shown);
        QCOMPARE(fx->frame->findChild<QLineEdit*>(u"txtSrv"_s)->text(), cells.last());
        QCOMPARE(grid->columnWidth(1), 247);
    }

    void nothingIsSavedWhenItCannotBe_data() {
        QTest::addColumn<QString>("cause");
        QTest::addColumn<QString>("told");
        QTest::newRow("no services") << u"empty catalogue"_s << u"There is no service to sell."_s;
        QTest::newRow("the database refuses") << u"refused"_s << u"The sale was not saved: "_s;
    }
    void nothingIsSavedWhenItCannotBe() {
        QFETCH(QString, cause);
        QFETCH(QString, told);
        if (cause == u"empty catalogue"_s) {
            fx->exec(u"DELETE FROM services"_s);
            console().rates().loadServices(console().database());
        } else {
            fx->exec(u"CREATE TRIGGER no_room BEFORE INSERT ON TmpRvnD BEGIN SELECT RAISE(ABORT, "
                     "'database or disk is full'); END"_s);
        }
        QVERIFY(openSale());
        field<QPushButton>(u"cmdsave"_s)->click();
        QCOMPARE(fx->prompts.shown.size(), 1);
        QVERIFY2(fx->prompts.last()->text.startsWith(told), qPrintable(fx->prompts.last()->text));
        QVERIFY(sale()); // still open: the operator may try again
        QCOMPARE(fx->scalar(u"SELECT count(*) FROM TmpRvnD"_s).toInt(), 0);
    }
};

QTEST_MAIN(ServiceSaleTest)
#include "tst_service_sale.moc"
