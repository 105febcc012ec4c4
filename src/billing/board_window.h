#pragma once

#include <QWidget>

#include <array>

class Console;
class FormHost;
class QComboBox;
class QFrame;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

// The active-terminal view (ATV): the board's page of 24 tiles, each with its terminal's
// number, what it is doing, the amount it has run up, its time-limit choice and its Stop
// and Unlock buttons, coloured by the terminal's state. Every control of a tile has the
// same object name on every tile ("cmdStop", ...) and the dynamic property "tile" (1-24);
// its accessible name names the terminal ("Stop PC 27").
//
// Its timer ATVTmr is what keeps time limits: they hold only while the view is open.
class BoardWindow : public QWidget {
    Q_OBJECT
public:
    static constexpr int TickMs = 1000;
    static constexpr int Columns = 6;

    BoardWindow(Console& console, FormHost& host, QWidget* parent = nullptr);
    ~BoardWindow() override;

    Console& console() { return console_; }
    // One tick of ATVTmr: limits applied and the tiles brought up to date.
    void tick();
    QSize sizeHint() const override;

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    struct Tile {
        QFrame* card = nullptr;
        QFrame* band = nullptr;
        QPushButton* number = nullptr; // lblTrmNo
        QLabel* state = nullptr;
        QLabel* description = nullptr;
        QLabel* amount = nullptr; // lblamnt
        QComboBox* limit = nullptr;
        QPushButton* stop = nullptr;
        QPushButton* unlock = nullptr;
        int look = -1;
        bool shown = false;
    };

    QWidget* buildHeader();
    QWidget* buildLegend();
    void buildTile(int tile, QWidget* parent);
    Tile& at(int tile) { return tiles_.at(size_t(tile - 1)); }

    void showPage();
    void showTexts(int tile);
    // Colours and buttons from the record; true when the tile came into or out of view.
    bool showState(int tile);
    void showLimit(int tile);
    void nameCard(int tile);
    void showUnlockRights();
    // The tiles to be seen flow into the grid in order, Columns to a row.
    void placeTiles();

    void numberClicked(int tile);
    void unlockClicked(int tile);

    Console& console_;
    FormHost& host_;
    QPushButton* cmdPrev_ = nullptr;
    QPushButton* cmdNext_ = nullptr;
    QPushButton* cmdShow_ = nullptr;
    QLineEdit* txtpage_ = nullptr;
    QWidget* header_ = nullptr;
    QWidget* page_ = nullptr;
    QGridLayout* grid_ = nullptr;
    QTimer* atvTmr_ = nullptr;
    std::array<Tile, 24> tiles_{};
    bool adminShown_ = false;
    bool ticking_ = false;
    bool sized_ = false;
};

// Opens the view as a child window of the frame, or brings the open one forward.
void openBoard(Console& console, FormHost& host);
