// Pictures of the members register filled with a café's members, one being edited, and of
// the member search part-way through a name, for people to look at. Written to
// $TARVO_BUILD_DIR/screenshots (or ./screenshots). Run it under xvfb-run with
// QT_QPA_PLATFORM=xcb to see the windows as a real display draws them.
#include "people/member_rules.h"
#include "people/member_search_dialog.h"
#include "support/frame_fixture.h"

#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

class MembersScreenshots : public QObject {
    Q_OBJECT

    FrameFixture fx;
    QDir out;

    void save(QWidget* w, const QString& file) {
        QTest::qWait(50);
        const QPixmap picture = w->grab();
        QVERIFY(picture.save(out.filePath(file)));
        qInfo("screenshot: %s (%dx%d)", qPrintable(out.filePath(file)), picture.width(),
              picture.height());
    }

private Q_SLOTS:
    void initTestCase() {
        const QString build = qEnvironmentVariable("TARVO_BUILD_DIR", u"."_s);
        out = QDir(build + u"/screenshots"_s);
        QVERIFY(out.mkpath(u"."_s));
        QVERIFY(fx.show(u"Admin"_s));
        const char* lasts[] = {"SANTOS",   "REYES",   "DELA CRUZ",  "BAUTISTA", "OCAMPO",
                               "GARCIA",   "MENDOZA", "VILLANUEVA", "PEÑA",     "AQUINO",
                               "CASTILLO", "NAVARRO", "DE LEON",    "MAGBANUA", "LIM"};
        const char* firsts[] = {"JUAN",  "MARIA CLARA", "JOSE",     "ANA",   "MARK ANTHONY", "ROSA",
                                "LORNA", "JERICHO",     "KRISTINE", "PAOLO", "CORAZON"};
        const char* streets[] = {"Mabini St., Malate", "Rizal Ave., Sta. Cruz",
                                 "Katipunan Ave., Loyola Heights", "P. Noval St., Sampaloc",
                                 "Aurora Blvd., Cubao"};
        const char* cities[] = {"Manila", "Quezon City", "Marikina", "Pasig"};
        for (int i = 0; i < 64; ++i)
            fx.exec(u"INSERT INTO members (CID, LN, FN, MN, ADR, Disc, Status, mdate, Accuhrs) "
                    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"_s,
                    {nextMemberId(i), QString::fromUtf8(lasts[(i * 7) % 15]),
                     QString::fromUtf8(firsts[(i * 5) % 11]),
                     QString::fromUtf8(lasts[(i * 11 + 3) % 15]),
                     u"%1 %2, %3"_s.arg(12 + i * 7 % 300)
                         .arg(QLatin1String(streets[i % 5]), QLatin1String(cities[i % 4])),
                     i % 6 == 0 ? 10 : 0, i % 9 == 4 ? u"Inactive"_s : u"Active"_s,
                     QDate(2024, 3, 2).addDays(i * 9), (i * 37) % 260});
        fx.frame->resize(1366, 768); // a common counter screen
    }

    void register_() {
        fx.frame->action(u"mnuCset"_s)->trigger();
        auto* members = fx.frame->findChild<QWidget*>(u"Members"_s);
        QVERIFY(members);
        auto* grid = members->findChild<QTableView*>(u"grdMembers"_s);
        grid->setCurrentIndex(grid->model()->index(7, 0));
        save(members->parentWidget(), u"members.png"_s);
        save(fx.frame.get(), u"main_with_members.png"_s);

        members->findChild<QLineEdit*>(u"txtskey"_s)->setText(u"an"_s);
        members->findChild<QPushButton*>(u"cmdfind"_s)->click();
        members->findChild<QPushButton*>(u"cmdedit"_s)->click();
        save(members->parentWidget(), u"members_found_editing.png"_s);
        members->findChild<QPushButton*>(u"cmdclose"_s)->click();
    }

    void search() {
        openMemberSearch(*fx.console, *fx.frame, [](const QString&, const QString&) {});
        auto* dialog = fx.frame->findChild<QDialog*>(u"Gsearch"_s);
        QVERIFY(dialog);
        for (auto* o : dialog->findChildren<QRadioButton*>(u"optwhat"_s))
            if (o->property("index").toInt() == 1)
                o->click();
        QTest::keyClicks(dialog->findChild<QLineEdit*>(u"txtskey"_s), u"cruz"_s);
        save(dialog, u"gsearch.png"_s);
    }
};

QTEST_MAIN(MembersScreenshots)
#include "tst_long_members_screenshots.moc"
