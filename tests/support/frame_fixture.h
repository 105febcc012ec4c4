#pragma once

// For the tests that drive windows (they link the GUI library).
#include "support/console_fixture.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QTest>

// The console's main frame over a started console, shown offscreen; every window is gone
// with the fixture.
struct FrameFixture : ConsoleFixture {
    std::unique_ptr<MainWindow> frame;

    // Starts the console with an operator of this type and shows the frame, whose modal
    // forms do not block.
    bool show(const QString& operatorType) {
        start();
        console->currentOperator() = {QStringLiteral("ANA"), operatorType, QStringLiteral("pw")};
        frame = std::make_unique<MainWindow>(*console);
        frame->setModalShowsBlock(false);
        frame->show();
        return QTest::qWaitForWindowExposed(frame.get());
    }
    ~FrameFixture() {
        frame.reset();
        for (QWidget* w : QApplication::topLevelWidgets())
            w->deleteLater();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};
