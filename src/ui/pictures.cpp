#include "ui/pictures.h"

#include <QPainter>
#include <QSvgRenderer>

// The pictures are compiled into a static library, whose resources the linker drops
// unless something refers to them. (Outside any namespace, as Qt requires.)
static void loadResources() {
    static const bool loaded = [] {
        Q_INIT_RESOURCE(pictures);
        return true;
    }();
    Q_UNUSED(loaded);
}

namespace {

QString pictureFile(const QString& name) {
    loadResources();
    return QStringLiteral(":/pictures/") + name + QStringLiteral(".svg");
}

// Toolbars show icons at 24 to 32 pixels, menus and lists at 16: a pixmap per size,
// and one at twice the size for high-density screens, keeps each drawn for its size.
QIcon iconFromFile(const QString& file, std::initializer_list<int> sizes) {
    QSvgRenderer svg(file);
    QIcon icon;
    if (!svg.isValid())
        return icon;
    for (int side : sizes) {
        for (int density : {1, 2}) {
            QPixmap pix(side * density, side * density);
            pix.fill(Qt::transparent);
            QPainter p(&pix);
            svg.render(&p);
            p.end();
            pix.setDevicePixelRatio(density);
            icon.addPixmap(pix);
        }
    }
    return icon;
}

QString stateName(TerminalState state) {
    switch (state) {
    case TerminalState::NotLogged:
        return QStringLiteral("notlogged");
    case TerminalState::Running:
        return QStringLiteral("running");
    case TerminalState::Paused:
        return QStringLiteral("paused");
    case TerminalState::Free:
        return QStringLiteral("free");
    case TerminalState::Billing:
        return QStringLiteral("billing");
    case TerminalState::Other:
        break;
    }
    return QStringLiteral("other");
}

// `bounds` (in the picture's own units) placed at `scale` with the picture's frame
// starting at `origin`.
QRectF placed(const QRectF& bounds, const QRectF& frame, qreal scale, QPointF origin) {
    return QRectF(origin + (bounds.topLeft() - frame.topLeft()) * scale, bounds.size() * scale);
}

} // namespace

namespace Pictures {

QIcon commandIcon(const QString& name) {
    static const QStringList names = {QStringLiteral("listing"),  QStringLiteral("logon"),
                                      QStringLiteral("board"),    QStringLiteral("rates"),
                                      QStringLiteral("members"),  QStringLiteral("accounts"),
                                      QStringLiteral("sales"),    QStringLiteral("printer"),
                                      QStringLiteral("registry"), QStringLiteral("close")};
    if (!names.contains(name))
        return QIcon();
    return iconFromFile(pictureFile(name), {16, 24, 32});
}

QIcon stateIcon(TerminalState state, bool online) {
    const QString name = QStringLiteral("state-") + stateName(state) +
                         (online ? QStringLiteral("-online") : QStringLiteral("-offline"));
    return iconFromFile(pictureFile(name), {16});
}

QPixmap background(int index, QSize size) {
    static const char* const files[BackgroundCount] = {"backdrop-dusk", "backdrop-dawn",
                                                       "backdrop-grid", "backdrop-sea"};
    QPixmap pix(size.expandedTo(QSize(1, 1)));
    pix.fill(Qt::black);
    QSvgRenderer svg(
        pictureFile(QString::fromLatin1(files[qBound(0, index, BackgroundCount - 1)])));
    if (!svg.isValid())
        return pix;
    const QString scene = QStringLiteral("scene");
    const QString mark = QStringLiteral("mark");
    const QRectF frame = svg.viewBoxF();
    const QSizeF area = pix.size();
    // Cover the area, centred: what does not fit is cut at the sides or top and bottom.
    const qreal scale = qMax(area.width() / frame.width(), area.height() / frame.height());
    const QPointF centred((area.width() - frame.width() * scale) / 2,
                          (area.height() - frame.height() * scale) / 2);
    QPainter p(&pix);
    svg.render(&p, scene, placed(svg.boundsOnElement(scene), frame, scale, centred));
    // The mark keeps its size and its distance from the bottom right corner.
    const QPointF corner(area.width() - frame.width(), area.height() - frame.height());
    svg.render(&p, mark, placed(svg.boundsOnElement(mark), frame, 1.0, corner));
    return pix;
}

} // namespace Pictures
