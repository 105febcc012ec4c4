#pragma once

#include <QMdiArea>

// The frame's client area: the windows' area, behind them one of the background
// pictures, kept filling the area at every size.
class BackdropArea final : public QMdiArea {
public:
    using QMdiArea::QMdiArea;

    void setPicture(int index);
    int picture() const { return picture_; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void repaintPicture();

    int picture_ = 0;
};
