#include "people/members_window.h"

#include "base/form_host.h"
#include "base/format.h"
#include "console/console.h"
#include "people/log_on_dialog.h"
#include "sales/report_window.h"
#include "ui/accessibility.h"

#include <QApplication>
#include <QButtonGroup>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTableView>
#include <QVBoxLayout>

namespace {

// Discards the keys a digits-only box does not take.
class DigitKeys final : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::KeyPress &&
            !acceptsDigitKey(static_cast<QKeyEvent*>(event)->text()))
            return true;
        return QObject::eventFilter(watched, event);
    }
};

// Column widths in characters of the grid's font, wide enough for what a café registers;
// the address stretches over what is left.
constexpr int ColumnChars[] = {10, 16, 16, 14, 28, 6, 10, 11, 8};
constexpr int AddressColumn = 4;

QPushButton* button(QWidget* parent, const char* name, const QString& caption) {
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(QString::fromLatin1(name));
    b->setAutoDefault(false);
    return b;
}

} // namespace

QTableView* makeMembersGrid(MemberListModel& list, QWidget* parent) {
    auto* grid = new QTableView(parent);
    grid->setObjectName(QStringLiteral("grdMembers"));
    grid->setModel(&list);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setSelectionMode(QAbstractItemView::SingleSelection);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setAlternatingRowColors(true);
    grid->setWordWrap(false);
    grid->verticalHeader()->hide();
    grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 8);
    const int charWidth = grid->fontMetrics().horizontalAdvance(QLatin1Char('M'));
    int width = 0;
    for (int c = 0; c < int(std::size(ColumnChars)); ++c) {
        grid->setColumnWidth(c, ColumnChars[c] * charWidth * 3 / 4);
        width += grid->columnWidth(c);
    }
    // Every column in view, with no scrolling sideways.
    grid->setMinimumWidth(width + grid->verticalScrollBar()->sizeHint().width() +
                          2 * grid->frameWidth());
    grid->horizontalHeader()->setSectionResizeMode(AddressColumn, QHeaderView::Stretch);
    grid->horizontalHeader()->setMinimumSectionSize(charWidth * 3);
    grid->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    return grid;
}

MembersWindow::MembersWindow(Console& console, FormHost& host, HandOn handOn, QWidget* parent)
    : QWidget(parent), console_(console), host_(host), handOn_(std::move(handOn)),
      desk_(console.database(), console.prompts(), console.clock()) {
    setObjectName(QStringLiteral("Members"));
    setWindowTitle(QStringLiteral("Clients Section - Members"));
    setAttribute(Qt::WA_DeleteOnClose);

    grid_ = makeMembersGrid(desk_.list(), this);
    grid_->setAccessibleName(QStringLiteral("Members"));

    count_ = new QLabel(this);
    count_->setObjectName(QStringLiteral("lblCount"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(buildSearchBar());
    layout->addWidget(grid_, 1);
    layout->addWidget(count_);
    layout->addWidget(buildDetails());
    layout->addWidget(buildButtons());

    connect(grid_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { desk_.setCurrentRow(current.row()); });
    connect(&desk_, &MembersDesk::currentRowChanged, this, &MembersWindow::selectRow);
    connect(&desk_, &MembersDesk::fieldsChanged, this, &MembersWindow::showMember);
    connect(&desk_, &MembersDesk::modeChanged, this, &MembersWindow::showMode);
    connect(&desk_.list(), &QAbstractItemModel::modelReset, this, &MembersWindow::showCount);
    connect(
        &desk_.list(), &MemberListModel::readFailed, this,
        [this](const QString& why) {
            console_.prompts().message(QStringLiteral("The members cannot be read: %1").arg(why),
                                       QStringLiteral("Members"), Prompts::Icon::Critical);
        },
        Qt::QueuedConnection); // told after the view has drawn, not from inside its paint

    showMode();
    desk_.open();
    makeAccessible(this);
}

QWidget* MembersWindow::buildSearchBar() {
    auto* bar = new QWidget(this);
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    txtskey_ = new QLineEdit(bar);
    txtskey_->setObjectName(QStringLiteral("txtskey"));
    txtskey_->setPlaceholderText(QStringLiteral("part of a name or an id"));
    txtskey_->setClearButtonEnabled(true);
    auto* label = new QLabel(QStringLiteral("Fi&nd:"), bar);
    label->setBuddy(txtskey_);
    row->addWidget(label);
    row->addWidget(txtskey_, 1);

    optwhat_ = new QButtonGroup(bar);
    const QString captions[] = {QStringLiteral("&Last name"), QStringLiteral("Fi&rst name"),
                                QStringLiteral("&ID")};
    for (int i = 0; i < 3; ++i) {
        auto* option = new QRadioButton(captions[i], bar);
        option->setObjectName(QStringLiteral("optwhat"));
        option->setProperty("index", i);
        optwhat_->addButton(option, i);
        row->addWidget(option);
    }
    optwhat_->button(0)->setChecked(true);

    auto* cmdfind = button(bar, "cmdfind", QStringLiteral("&Find"));
    auto* cmdBrw = button(bar, "cmdBrw", QStringLiteral("&Browse All"));
    row->addWidget(cmdfind);
    row->addWidget(cmdBrw);
    browsingOnly_ << txtskey_ << cmdfind << cmdBrw;
    for (QAbstractButton* option : optwhat_->buttons())
        browsingOnly_ << option;

    auto find = [this] {
        desk_.findPressed(MembersDesk::FindBy(optwhat_->checkedId()), txtskey_->text());
    };
    connect(cmdfind, &QPushButton::clicked, this, find);
    connect(txtskey_, &QLineEdit::returnPressed, this, find);
    connect(cmdBrw, &QPushButton::clicked, this, [this] { desk_.browsePressed(); });
    return bar;
}

QLineEdit* MembersWindow::field(const char* name, int maxLength) {
    auto* box = new QLineEdit(this);
    box->setObjectName(QString::fromLatin1(name));
    box->setMaxLength(maxLength);
    return box;
}

QWidget* MembersWindow::buildDetails() {
    auto* group = new QGroupBox(QStringLiteral("The member"), this);
    group->setObjectName(QStringLiteral("fraMember"));
    txtid_ = field("txtid", 20);
    txtln_ = field("txtln", 50);
    txtFn_ = field("txtFn", 50);
    txtMn_ = field("txtMn", 50);
    txtadr_ = field("txtadr", 120);
    txtdisc_ = field("txtdisc", 9);
    txtstat_ = field("txtstat", 20);
    txtmbdate_ = field("txtmbdate", 10);
    txtmbdate_->setPlaceholderText(QStringLiteral("MM/DD/YYYY"));
    txtAccu_ = field("txtAccu", 9);
    auto* digits = new DigitKeys(this);
    for (QLineEdit* box : {txtdisc_, txtAccu_}) {
        box->installEventFilter(digits);
        box->setAlignment(Qt::AlignRight);
    }

    // Three pairs of label and box a line.
    auto* form = new QGridLayout(group);
    const std::pair<QString, QLineEdit*> fields[] = {
        {QStringLiteral("ID"), txtid_},          {QStringLiteral("Last na&me"), txtln_},
        {QStringLiteral("Firs&t name"), txtFn_}, {QStringLiteral("Middle nam&e"), txtMn_},
        {QStringLiteral("&Status"), txtstat_},   {QStringLiteral("Member sin&ce"), txtmbdate_},
        {QStringLiteral("Disco&unt"), txtdisc_}, {QStringLiteral("Accumulated &hours"), txtAccu_},
    };
    int at = 0;
    for (const auto& [caption, box] : fields) {
        auto* label = new QLabel(caption, group);
        label->setBuddy(box);
        form->addWidget(label, at / 3, (at % 3) * 2);
        form->addWidget(box, at / 3, (at % 3) * 2 + 1);
        ++at;
    }
    auto* label = new QLabel(QStringLiteral("&Address"), group);
    label->setBuddy(txtadr_);
    form->addWidget(label, 3, 0);
    form->addWidget(txtadr_, 3, 1, 1, 5);
    for (int c : {1, 3, 5})
        form->setColumnStretch(c, 1);
    return group;
}

QWidget* MembersWindow::buildButtons() {
    auto* bar = new QWidget(this);
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(0, 0, 0, 0);
    cmdAddM_ = button(bar, "cmdAddM", QString());
    cmdedit_ = button(bar, "cmdedit", QString());
    auto* cmddel = button(bar, "cmddel", QStringLiteral("&Delete"));
    auto* cmdlog = button(bar, "cmdlog", QStringLiteral("L&og On to a PC"));
    auto* cmdprint = button(bar, "cmdprint", QStringLiteral("&Print List"));
    cmdclose_ = button(bar, "cmdclose", QString());
    for (QPushButton* b : {cmdAddM_, cmdedit_, cmddel})
        row->addWidget(b);
    row->addSpacing(16);
    row->addWidget(cmdlog);
    row->addWidget(cmdprint);
    row->addStretch(1);
    row->addWidget(cmdclose_);
    browsingOnly_ << cmddel << cmdlog << cmdprint << grid_;

    connect(cmdAddM_, &QPushButton::clicked, this, [this] { desk_.addPressed(typed()); });
    connect(cmdedit_, &QPushButton::clicked, this, [this] { desk_.editPressed(typed()); });
    connect(cmddel, &QPushButton::clicked, this, [this] { desk_.deletePressed(); });
    connect(cmdlog, &QPushButton::clicked, this, [this] {
        if (const auto member = desk_.logOnMember())
            handOn_(member->first, member->second);
    });
    connect(cmdprint, &QPushButton::clicked, this,
            [this] { printMemberListText(console_, host_); });
    connect(cmdclose_, &QPushButton::clicked, this, &MembersWindow::closeClicked);
    return bar;
}

Member MembersWindow::typed() const {
    return {txtid_->text(),   txtln_->text(),     txtFn_->text(),
            txtMn_->text(),   txtadr_->text(),    txtdisc_->text(),
            txtstat_->text(), txtmbdate_->text(), txtAccu_->text()};
}

void MembersWindow::showMember(const Member& m) {
    const std::pair<QLineEdit*, const QString*> shown[] = {
        {txtid_, &m.id},         {txtln_, &m.lastName},  {txtFn_, &m.firstName},
        {txtMn_, &m.middleName}, {txtadr_, &m.address},  {txtdisc_, &m.discount},
        {txtstat_, &m.status},   {txtmbdate_, &m.since}, {txtAccu_, &m.hours}};
    for (const auto& [box, text] : shown) {
        box->setText(*text);
        box->setCursorPosition(0);
    }
}

void MembersWindow::showMode() {
    cmdAddM_->setText(desk_.addCaption());
    cmdedit_->setText(desk_.editCaption());
    cmdclose_->setText(desk_.closeCaption());
    const bool typing = desk_.fieldsEditable();
    for (QLineEdit* box :
         {txtid_, txtln_, txtFn_, txtMn_, txtadr_, txtdisc_, txtstat_, txtmbdate_, txtAccu_})
        box->setReadOnly(!typing);
    for (QWidget* w : browsingOnly_)
        w->setEnabled(!typing);
    cmdAddM_->setEnabled(desk_.mode() != MembersDesk::Mode::Editing);
    cmdedit_->setEnabled(desk_.mode() != MembersDesk::Mode::Adding);
    if (typing)
        (desk_.mode() == MembersDesk::Mode::Adding ? txtln_ : txtid_)->setFocus();
    makeAccessible(this); // the captions changed
}

void MembersWindow::showCount() {
    const int n = desk_.list().rowCount();
    const QString number = formatNumber(double(n), QStringLiteral("###,###,##0"));
    const MemberFilter& filter = desk_.list().filter();
    count_->setText(
        filter.field
            ? QStringLiteral("%1 found holding \"%2\", by last name").arg(number, filter.text)
            : QStringLiteral("%1 %2").arg(number, n == 1 ? QStringLiteral("member")
                                                         : QStringLiteral("members")));
}

void MembersWindow::selectRow(int row) {
    const QModelIndex index = desk_.list().index(row, 0);
    if (!index.isValid()) {
        grid_->selectionModel()->clear();
        return;
    }
    grid_->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                        QItemSelectionModel::Rows);
    grid_->scrollTo(index);
}

void MembersWindow::closeClicked() {
    if (!desk_.closePressed())
        return;
    if (auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget()))
        sub->close();
    else
        close();
}

QSize MembersWindow::sizeHint() const {
    const int em = fontMetrics().horizontalAdvance(QLatin1Char('M'));
    return {em * 90, fontMetrics().height() * 40};
}

void openMembersRegister(Console& console, FormHost& host) {
    for (QWidget* w : QApplication::allWidgets())
        if (auto* open = qobject_cast<MembersWindow*>(w); open && &open->console() == &console) {
            host.showForm(open, false);
            return;
        }
    auto handOn = [&console, &host](const QString& id, const QString& name) {
        openLogOnDialog(console, host, LogOnRequest{0, id, name});
    };
    host.showForm(new MembersWindow(console, host, handOn), false);
}
