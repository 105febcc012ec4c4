// The service sale (NewSrv), opened from today's sales window and driven through its boxes.
#include "support/frame_fixture.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

template <typename... T> static void row(const char* name, const T&... values) {
    (QTest::newRow(name) << ... << values);
}

class ServiceSaleTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;

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
    // Steps such as "choose Binding, qty 3, price 12.50, or 000123", as the operator does them.
    void run(const QString& steps) {
        const QHash<QString, QString> boxes{
            {u"qty"_s, u"txtQty"_s}, {u"price"_s, u"txtamnt"_s}, {u"or"_s, u"txtor"_s}};
        for (const QString& step : steps.split(u", "_s)) {
            const QString what = step.section(u' ', 0, 0), value = step.section(u' ', 1);
            if (what == u"choose"_s) {
                auto* combo = field<QComboBox>(u"cmbSrvc"_s);
                const int index = combo->findText(value);
                QVERIFY2(index >= 0, qPrintable(step));
                combo->setCurrentIndex(index);
                Q_EMIT combo->activated(index); // picked, even when it is shown already
                continue;
            }
            QVERIFY2(boxes.contains(what), qPrintable(step));
            QLineEdit* box = field(boxes[what]); // the old text selected and typed over
            box->setFocus();
            box->selectAll();
            if (value.isEmpty())
                QTest::keyClick(box, Qt::Key_Delete);
            else
                QTest::keyClicks(box, value);
        }
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"Cashier"_s));
        fx->exec(u"INSERT INTO services (Description, Amount) VALUES ('Print', 25), "
                 "('Binding', 1250), ('Kid''s scan', 12.5)"_s);
        fx->console->rates().loadServices(fx->console->database());
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
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("boxes"); // price, then total
        row("quantity 3 at 25", "choose Print, qty 3", "25.00 75.00");
        row("1,250 at quantity 2", "qty 2, choose Binding", "1,250.00 2,500.00");
        // Edited, the grouped price box counts as its first digit.
        row("then quantity 3", "qty 2, choose Binding, qty 3", "1,250.00 3.00");
        row("chosen again, worked out right", "qty 2, choose Binding, qty 3, choose Binding",
            "1,250.00 3,750.00");
        row("price typed", "choose Print, price 12.75, qty 4", "12.75 51.00");
        row("price typed with a separator", "choose Print, price 2,000, qty 4", "2,000 8.00");
        row("empty quantity", "choose Print, qty ", "25.00 0.00");
        row("letters", "choose Print, qty abc", "25.00 0.00");
        row("quantity with a tail", "choose Kid's scan, qty 3pcs", "12.50 37.50");
    }
    void totalFollowsTheBoxes() {
        QFETCH(QString, steps);
        QFETCH(QString, boxes);
        QVERIFY(openSale());
        run(steps);
        QCOMPARE(text(u"txtamnt"_s) + u' ' + text(u"txttamnt"_s), boxes);
        QCOMPARE(fx->prompts.texts(), QStringList());
    }

    void saveWritesTheServiceRow_data() {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("row");   // Orno|Amount|rdesc|subamnt|qty
        QTest::addColumn<QString>("shown"); // today's services grid: OR, description, qty, amount
        row("2,500.00 is stored as 2500, the price as its text", "or 123, qty 2, choose Binding",
            "123|2500|Binding|1,250.00|2", "123|Binding|2|2,500.00");
        row("no receipt number is 0", "choose Print, qty 3", "0|75|Print|25.00|3",
            "0|Print|3|75.00");
        row("receipt number read up to its first letter", "or 0042-B, choose Print",
            "42|25|Print|25.00|1", "42|Print|1|25.00");
        row("an empty quantity is 0", "choose Print, qty ", "0|0|Print|25.00|0", "0|Print|0|0.00");
        row("an apostrophe in the service", "choose Kid's scan, qty 2", "0|25|Kid's scan|12.50|2",
            "0|Kid's scan|2|25.00");
        row("the total as shown, after an edit", "qty 2, choose Binding, qty 3",
            "0|3|Binding|1,250.00|3", "0|Binding|3|3.00");
    }
    void saveWritesTheServiceRow() {
        QFETCH(QString, steps);
        QFETCH(QString, row);
        QFETCH(QString, shown);
        QVERIFY(openSale());
        run(steps);
        field<QPushButton>(u"cmdsave"_s)->click();
        QCOMPARE(fx->prompts.texts(), QStringList{"Service has been saved"});
        QCOMPARE(fx->prompts.last()->title, u"Saved"_s);
        QCOMPARE(fx->prompts.last()->icon, Prompts::Icon::Information);
        QVERIFY(!sale());

        auto value = [&](const QString& of) {
            return fx->scalar(u"SELECT %1 FROM TmpRvnD"_s.arg(of));
        };
        QCOMPARE(value(u"count(*)"_s).toInt(), 1);
        QStringList values;
        for (const QString& column :
             {u"Orno"_s, u"Amount"_s, u"rdesc"_s, u"subamnt"_s, u"qty"_s, u"rtype"_s})
            values << value(column).toString();
        QCOMPARE(values.join(u'|'), row + u"|SERVICE"_s);
        QCOMPARE(value(u"Rdate"_s).toDate(), QDate(2026, 11, 15));
        QVERIFY(value(u"coalesce(CID, TID, StartT, EndT, Tcons)"_s).isNull()); // no rental columns

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
        row("no services", "empty catalogue", "There is no service to sell.");
        row("the database refuses", "refused", "The sale was not saved: ");
    }
    void nothingIsSavedWhenItCannotBe() {
        QFETCH(QString, cause);
        QFETCH(QString, told);
        if (cause == u"empty catalogue"_s) {
            fx->exec(u"DELETE FROM services"_s);
            fx->console->rates().loadServices(fx->console->database());
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
