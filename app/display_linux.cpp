#include "app/display.h"

#include <QApplication>
#include <QFont>
#include <QPalette>
#include <QStyle>

// Without a display the usual plugin aborts the program.
const char* const kCommandLinePlatform = "minimal";

namespace {

constexpr char kDotsPerInch[] = "QT_FONT_DPI";
constexpr char kDotsPerInchOfWindow[] = "72";
constexpr char kOpenGl[] = "QT_XCB_GL_INTEGRATION";
constexpr double kDesktopScale = 96.0 / 72.0;

bool scalesPoints = false;

} // namespace

/// The window is laid out for points of 72 to the inch; at the usual 96 its texts would run into
/// its widgets. It needs no OpenGL, which would take half of the start. Who has set either knows
/// better.
void prepareDisplay() {
    if (!qEnvironmentVariableIsSet(kOpenGl)) {
        (void)qputenv(kOpenGl, "none");
    }
    if (!qEnvironmentVariableIsSet(kDotsPerInch)) {
        scalesPoints = qputenv(kDotsPerInch, kDotsPerInchOfWindow);
    }
}

/// Keeps the texts on widgets as large as the desktop has them, and the window's background light:
/// what is painted on it is black.
void adaptToDisplay() {
    QFont font = QApplication::font();
    if (scalesPoints && font.pointSizeF() > 0) { // some desktops count in pixels
        font.setPointSizeF(font.pointSizeF() * kDesktopScale);
        QApplication::setFont(font);
    }
    constexpr int kMiddleGrey = 128;
    if (QApplication::palette().color(QPalette::Window).lightness() < kMiddleGrey) {
        QApplication::setPalette(QApplication::style()->standardPalette());
    }
}
