#include "ui/backdrop_area.h"

#include "ui/pictures.h"

void BackdropArea::setPicture(int index) {
    picture_ = index;
    repaintPicture();
}

void BackdropArea::resizeEvent(QResizeEvent* event) {
    QMdiArea::resizeEvent(event);
    repaintPicture();
}

void BackdropArea::repaintPicture() {
    setBackground(QBrush(Pictures::background(picture_, viewport()->size())));
    viewport()->update();
}
