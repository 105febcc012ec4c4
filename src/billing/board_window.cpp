#include "billing/board_window.h"

#include "base/form_host.h"
#include "billing/bill_dialog.h"
#include "billing/board_rules.h"
#include "console/console.h"
#include "people/log_on_dialog.h"
#include "people/rights.h"
#include "server/operator_commands.h"
#include "ui/accessibility.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>

static_assert(ActiveBoard::TilesPerPage == 24, "the view draws 24 tiles a page");

namespace {

// What a tile looks like, from its terminal's record: read at a glance by colour, and
// by its word for those who do not tell the colours apart.
enum class Look { Running, Paused, Billing, Free, Idle, OffLine };

struct LookStyle {
    const char* word;
    const char* band;     // the strip with the number
    const char* bandText; // the number and word on it
    const char* tint;     // the card below
};

constexpr LookStyle Styles[] = {
    {"In use", "#2e7d32", "#ffffff", "#e8f5e9"},   // Running
    {"Paused", "#f9a825", "#212121", "#fff8e1"},   // Paused
    {"Billing", "#6a1b9a", "#ffffff", "#f3e5f5"},  // Billing
    {"Free use", "#1565c0", "#ffffff", "#e3f2fd"}, // Free
    {"Idle", "#616161", "#ffffff", "#f5f5f5"},     // Idle
    {"Off line", "#cfcfcf", "#424242", "#fafafa"}, // OffLine
};

Look lookOf(const TerminalRecord& r) {
    switch (r.state) {
    case TerminalState::Running:
        return r.logged ? Look::Running : Look::Idle;
    case TerminalState::Paused:
        return Look::Paused;
    case TerminalState::Billing:
        return Look::Billing;
    case TerminalState::Free:
        return Look::Free;
    case TerminalState::NotLogged:
    case TerminalState::Other:
        break;
    }
    return r.online ? Look::Idle : Look::OffLine;
}

QString styleSheetOf(Look look) {
    const LookStyle& s = Styles[int(look)];
    return QStringLiteral("QFrame#fraTile { background: %1; border: 2px solid %2; "
                          "border-radius: 6px; }"
                          "QFrame#fraBand { background: %2; border: none; border-radius: 3px; }"
                          "QPushButton#lblTrmNo { color: %3; background: transparent; "
                          "border: none; text-align: left; padding: 0 2px; }"
                          "QPushButton#lblTrmNo:focus { text-decoration: underline; }"
                          "QLabel#lblState { color: %3; }"
                          "QLabel#lblDesc, QLabel#lblamnt { color: #212121; }")
        .arg(QLatin1String(s.tint), QLatin1String(s.band), QLatin1String(s.bandText));
}

QFont scaled(QFont font, qreal factor, bool bold) {
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(bold);
    return font;
}

void setTile(QWidget* w, const char* name, int tile) {
    w->setObjectName(QString::fromLatin1(name));
    w->setProperty("tile", tile);
}

const QStringList LimitChoices = {QStringLiteral("10"), QStringLiteral("15"), QStringLiteral("30"),
                                  QStringLiteral("60"), QStringLiteral("90"), QStringLiteral("120"),
                                  QStringLiteral("U")};

} // namespace

BoardWindow::BoardWindow(Console& console, FormHost& host, QWidget* parent)
    : QWidget(parent), console_(console), host_(host) {
    setObjectName(QStringLiteral("ATV"));
    setWindowTitle(QStringLiteral("Active Terminal View"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto* layout = new QVBoxLayout(this);
    header_ = buildHeader();
    layout->addWidget(header_);

    auto* page = new QWidget;
    page_ = page;
    page->setObjectName(QStringLiteral("fraTiles"));
    grid_ = new QGridLayout;
    grid_->setSpacing(6);
    for (int tile = 1; tile <= ActiveBoard::TilesPerPage; ++tile)
        buildTile(tile, page);
    auto* pageLayout = new QVBoxLayout(page);
    pageLayout->setContentsMargins(0, 0, 0, 0);
    pageLayout->addLayout(grid_);
    pageLayout->addStretch(1);
    auto* scroll = new QScrollArea(this);
    scroll->setObjectName(QStringLiteral("scrTiles"));
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(page);
    scroll->setAccessibleName(QStringLiteral("Terminals"));
    layout->addWidget(scroll, 1);

    ActiveBoard& board = console_.board();
    connect(&board, &ActiveBoard::pageChanged, this, &BoardWindow::showPage);
    connect(&board, &ActiveBoard::tileChanged, this, &BoardWindow::showTexts);
    connect(&console_.terminals(), &TerminalTable::terminalChanged, this, [this](int pc) {
        const int tile = pc - console_.board().pcOfTile(1) + 1;
        if (tile >= 1 && tile <= ActiveBoard::TilesPerPage && showState(tile))
            placeTiles();
    });
    connect(&console_.terminals(), &TerminalTable::tableReset, this, &BoardWindow::showPage);
    connect(&console_.timeLimits(), &TimeLimitSlots::limitChanged, this, &BoardWindow::showLimit);

    atvTmr_ = new QTimer(this);
    atvTmr_->setObjectName(QStringLiteral("ATVTmr"));
    atvTmr_->setInterval(TickMs);
    connect(atvTmr_, &QTimer::timeout, this, &BoardWindow::tick);
    atvTmr_->start();

    showPage();
    makeAccessible(this);
}

BoardWindow::~BoardWindow() = default;

QSize BoardWindow::sizeHint() const {
    // The whole page without scrolling; the scroll area alone would ask for much less.
    const QSize page = page_->sizeHint();
    const QSize header = header_->sizeHint();
    const QMargins m = layout()->contentsMargins();
    return {qMax(page.width(), header.width()) + m.left() + m.right(),
            header.height() + layout()->spacing() + page.height() + m.top() + m.bottom()};
}

QWidget* BoardWindow::buildHeader() {
    auto* header = new QWidget(this);
    auto* row = new QHBoxLayout(header);
    row->setContentsMargins(0, 0, 0, 0);
    cmdPrev_ = new QPushButton(QStringLiteral("< &Previous"), header);
    cmdPrev_->setObjectName(QStringLiteral("cmdPrev"));
    txtpage_ = new QLineEdit(header);
    txtpage_->setObjectName(QStringLiteral("txtpage"));
    txtpage_->setReadOnly(true);
    txtpage_->setAlignment(Qt::AlignCenter);
    txtpage_->setAccessibleName(QStringLiteral("Page"));
    txtpage_->setFixedWidth(txtpage_->fontMetrics().horizontalAdvance(QStringLiteral("88 of 88")) +
                            24);
    cmdNext_ = new QPushButton(QStringLiteral("&Next >"), header);
    cmdNext_->setObjectName(QStringLiteral("cmdNext"));
    cmdShow_ = new QPushButton(header);
    cmdShow_->setObjectName(QStringLiteral("cmdShow"));
    row->addWidget(cmdPrev_);
    row->addWidget(txtpage_);
    row->addWidget(cmdNext_);
    row->addSpacing(12);
    row->addWidget(cmdShow_);
    row->addStretch(1);
    row->addWidget(buildLegend());

    ActiveBoard& board = console_.board();
    connect(cmdPrev_, &QPushButton::clicked, this, [&board] { board.setPage(board.page() - 1); });
    connect(cmdNext_, &QPushButton::clicked, this, [&board] { board.setPage(board.page() + 1); });
    connect(cmdShow_, &QPushButton::clicked, this,
            [&board] { board.setHidesUnused(!board.hidesUnused()); });
    return header;
}

QWidget* BoardWindow::buildLegend() {
    auto* legend = new QWidget(this);
    legend->setObjectName(QStringLiteral("fraLegend"));
    auto* row = new QHBoxLayout(legend);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    for (const LookStyle& s : Styles) {
        auto* chip = new QLabel(QString::fromLatin1(s.word), legend);
        chip->setStyleSheet(QStringLiteral("QLabel { background: %1; color: %2; "
                                           "border-radius: 3px; padding: 2px 6px; }")
                                .arg(QLatin1String(s.band), QLatin1String(s.bandText)));
        row->addWidget(chip);
    }
    return legend;
}

void BoardWindow::buildTile(int tile, QWidget* parent) {
    Tile& t = at(tile);
    t.card = new QFrame(parent);
    setTile(t.card, "fraTile", tile);
    // Six tiles to a row fit beside the terminal list on a screen 1366 pixels wide.
    t.card->setFixedWidth(152);
    auto* column = new QVBoxLayout(t.card);
    column->setContentsMargins(4, 4, 4, 4);
    column->setSpacing(2);

    t.band = new QFrame(t.card);
    setTile(t.band, "fraBand", tile);
    auto* bandRow = new QHBoxLayout(t.band);
    bandRow->setContentsMargins(2, 0, 6, 0);
    t.number = new QPushButton(t.band);
    setTile(t.number, "lblTrmNo", tile);
    t.number->setFlat(true);
    t.number->setCursor(Qt::PointingHandCursor);
    t.number->setFont(scaled(font(), 1.7, true));
    t.state = new QLabel(t.band);
    setTile(t.state, "lblState", tile);
    t.state->setFont(scaled(font(), 0.9, true));
    bandRow->addWidget(t.number);
    bandRow->addStretch(1);
    bandRow->addWidget(t.state);
    column->addWidget(t.band);

    t.description = new QLabel(t.card);
    setTile(t.description, "lblDesc", tile);
    t.description->setWordWrap(true);
    t.description->setFont(scaled(font(), 0.85, false));
    // Three lines whatever it says, so the tiles of a row stay level.
    t.description->setFixedHeight(t.description->fontMetrics().lineSpacing() * 3);
    t.description->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    column->addWidget(t.description);

    t.amount = new QLabel(t.card);
    setTile(t.amount, "lblamnt", tile);
    t.amount->setFont(scaled(font(), 1.5, true));
    t.amount->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    column->addWidget(t.amount);

    auto* limitRow = new QHBoxLayout;
    auto* limitLabel = new QLabel(QStringLiteral("Limit"), t.card);
    t.limit = new QComboBox(t.card);
    setTile(t.limit, "cmbTlmt", tile);
    t.limit->addItems(LimitChoices);
    t.limit->setToolTip(QStringLiteral("Set Watch time for this PC in minutes"));
    limitLabel->setBuddy(t.limit);
    limitRow->addWidget(limitLabel);
    limitRow->addWidget(t.limit, 1);
    column->addLayout(limitRow);

    auto* buttons = new QHBoxLayout;
    t.stop = new QPushButton(QStringLiteral("Stop"), t.card);
    setTile(t.stop, "cmdStop", tile);
    t.unlock = new QPushButton(QStringLiteral("Unlock"), t.card);
    setTile(t.unlock, "cmdFree", tile);
    for (QPushButton* b : {t.stop, t.unlock}) {
        b->setAutoDefault(false);
        b->setMinimumWidth(0);
        buttons->addWidget(b);
    }
    column->addLayout(buttons);

    ActiveBoard& board = console_.board();
    connect(t.number, &QPushButton::clicked, this, [this, tile] { numberClicked(tile); });
    connect(t.limit, &QComboBox::textActivated, this, [this, &board, tile](const QString& text) {
        chooseTimeLimit(board, console_.sessionParts(), tile, text);
    });
    connect(t.stop, &QPushButton::clicked, this,
            [this, &board, tile] { openBill(console_, host_, board.pcOfTile(tile), tile); });
    connect(t.unlock, &QPushButton::clicked, this, [this, tile] { unlockClicked(tile); });
}

void BoardWindow::showPage() {
    const ActiveBoard& board = console_.board();
    txtpage_->setText(board.pageText());
    cmdPrev_->setEnabled(board.page() > 1);
    cmdNext_->setEnabled(board.page() < board.pageCount());
    cmdShow_->setText(board.hidesUnused() ? QStringLiteral("Show Unused PC's")
                                          : QStringLiteral("Hide Unused PC's"));
    // A page just shown starts with what the records hold now, not at the next tick.
    try {
        console_.board().refresh(console_.terminals(), console_.rates(),
                                 console_.clock().tickCount());
    } catch (const TickOverflow&) {
    }
    adminShown_ = console_.currentOperator().isAdmin();
    for (int tile = 1; tile <= ActiveBoard::TilesPerPage; ++tile) {
        Tile& t = at(tile);
        const QString pc = QString::number(board.pcOfTile(tile));
        t.number->setText(pc);
        t.number->setAccessibleName(QStringLiteral("PC ") + pc);
        t.amount->setAccessibleName(QStringLiteral("Amount of PC ") + pc);
        t.limit->setAccessibleName(QStringLiteral("Time limit of PC ") + pc);
        t.stop->setAccessibleName(QStringLiteral("Stop PC ") + pc);
        t.unlock->setAccessibleName(QStringLiteral("Unlock PC ") + pc);
        showTexts(tile);
        showState(tile);
        showLimit(tile);
    }
    placeTiles();
}

void BoardWindow::showTexts(int tile) {
    const ActiveBoard::Tile& shown = console_.board().tile(tile);
    Tile& t = at(tile);
    t.description->setText(shown.description);
    t.amount->setText(shown.amount);
    for (QWidget* w : {static_cast<QWidget*>(t.card), static_cast<QWidget*>(t.number)})
        w->setToolTip(shown.hint);
    nameCard(tile);
}

void BoardWindow::nameCard(int tile) {
    // The amount label is named for what it holds, so a screen reader hears its figure
    // from the tile: "PC 27: In use, P 15.00".
    Tile& t = at(tile);
    t.card->setAccessibleName(t.number->accessibleName() + QStringLiteral(": ") + t.state->text() +
                              QStringLiteral(", ") + t.amount->text());
}

bool BoardWindow::showState(int tile) {
    const ActiveBoard& board = console_.board();
    Tile& t = at(tile);
    const int pc = board.pcOfTile(tile);
    const bool exists = board.hasTerminal(tile) && console_.terminals().contains(pc);
    const bool shown =
        exists && !(board.hidesUnused() && ActiveBoard::isUnused(console_.terminals().at(pc)));
    const bool moved = shown != t.shown;
    t.shown = shown;
    if (!exists)
        return moved;
    const TerminalRecord& r = console_.terminals().at(pc);
    const Look look = lookOf(r);
    if (int(look) != t.look) {
        t.look = int(look);
        t.card->setStyleSheet(styleSheetOf(look));
        t.state->setText(QString::fromLatin1(Styles[int(look)].word));
        nameCard(tile);
    }
    const bool session =
        r.logged && (r.state == TerminalState::Running || r.state == TerminalState::Paused);
    t.stop->setEnabled(session);
    // Unlocking is for a terminal on line with no session, and for an administrator.
    t.unlock->setEnabled(adminShown_ && !r.logged && r.online);
    return moved;
}

void BoardWindow::showLimit(int tile) {
    QComboBox* combo = at(tile).limit;
    const QString limit = console_.board().timeLimit(tile);
    const int index = combo->findText(limit);
    combo->setCurrentIndex(index);
    // A limit that is no choice of the list (an extended one, "75") still shows.
    combo->setPlaceholderText(index < 0 ? limit : QString());
}

void BoardWindow::showUnlockRights() {
    adminShown_ = console_.currentOperator().isAdmin();
    for (int tile = 1; tile <= ActiveBoard::TilesPerPage; ++tile)
        showState(tile);
}

void BoardWindow::placeTiles() {
    for (const Tile& t : tiles_)
        grid_->removeWidget(t.card);
    int place = 0;
    for (const Tile& t : tiles_) {
        t.card->setVisible(t.shown);
        if (t.shown) {
            grid_->addWidget(t.card, place / Columns, place % Columns);
            ++place;
        }
    }
}

void BoardWindow::tick() {
    if (ticking_)
        return;
    ticking_ = true;
    boardTick(console_.board(), console_.sessionParts(), console_.rates());
    // The operator may be switched while the view is open, and the account announces
    // nothing: the unlock buttons follow at the next tick.
    if (console_.currentOperator().isAdmin() != adminShown_)
        showUnlockRights();
    ticking_ = false;
}

void BoardWindow::numberClicked(int tile) {
    const int pc = console_.board().pcOfTile(tile);
    if (mayAssignPc(console_.sessionParts(), pc))
        openLogOnDialog(console_, host_, {pc, {}, {}});
}

void BoardWindow::unlockClicked(int tile) {
    const CurrentOperator& op = console_.currentOperator();
    // The button follows a switch of operator only at the next tick.
    if (!adminOrRefuse(op, console_.prompts(), AdminCommand::TerminalUnlock))
        return;
    unlockFromBoard(console_.board(), console_.sessionParts(), op, tile);
}

void BoardWindow::closeEvent(QCloseEvent* event) {
    if (!boardMayClose(console_.terminals(), console_.prompts())) {
        event->ignore();
        return;
    }
    atvTmr_->stop();
    event->accept();
}

void BoardWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (sized_)
        return;
    sized_ = true;
    // As big as the whole page wants, within the frame's window area.
    auto* sub = qobject_cast<QMdiSubWindow*>(parentWidget());
    if (!sub || !sub->mdiArea())
        return;
    const QSize room = sub->mdiArea()->viewport()->size();
    sub->resize(sub->sizeHint().boundedTo(room));
}

void openBoard(Console& console, FormHost& host) {
    for (QWidget* w : QApplication::allWidgets())
        if (auto* open = qobject_cast<BoardWindow*>(w); open && &open->console() == &console) {
            host.showForm(open, false);
            return;
        }
    host.showForm(new BoardWindow(console, host), false);
}
