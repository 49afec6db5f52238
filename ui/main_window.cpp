#include "ui/main_window.h"

#include "app/log.h"
#include "configuration/config.h"

#include <QComboBox>
#include <QFont>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPen>
#include <QProgressBar>
#include <QPushButton>

#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int kWindowWidth = 570;
constexpr int kWindowHeight = 430;

constexpr char kFontFamily[] = "Arial";
constexpr int kHeadingPoints = 16;
constexpr int kTextPoints = 14;
constexpr double kPenWidth = 10;

constexpr int kLeftMargin = 10;
constexpr int kHeadingY = 30;
constexpr int kInstructionsY = 70;
constexpr int kInstructionsStep = 30; // to the next line, and to the right at a tab
constexpr int kFooterFromBottom = 15;
constexpr int kBaselineBelowMiddle = 5;

/// The port of a device as the first list shows it. The list of a refresh shows the whole port;
/// operators know both.
QString shortPort(const std::string& port) {
    constexpr char kFolder[] = "/dev/";
    const bool inFolder = port.compare(0, std::strlen(kFolder), kFolder) == 0;
    return QString::fromStdString(inFolder ? port.substr(std::strlen(kFolder)) : port);
}

/// Only the colour shows in texts.
QPen textPen(Qt::GlobalColor colour) {
    return {QBrush(colour, Qt::SolidPattern), kPenWidth, Qt::DashDotLine, Qt::RoundCap,
            Qt::RoundJoin};
}

bool isTab(const std::string& line) {
    return line == "[TAB]" || line == "[TAB]\r";
}

void drawText(QPainter& painter, int x, int y, const char* text) {
    painter.drawText(QPointF(x, y), QString::fromUtf8(text));
}

/// Draws the caption of a widget, level with its middle.
void drawCaption(QPainter& painter, const QWidget& widget, const char* text) {
    drawText(painter, kLeftMargin, widget.y() + kBaselineBelowMiddle + widget.height() / 2, text);
}

/// A tab moves all lines after it to the right.
void drawInstructions(QPainter& painter, const std::vector<std::string>& lines) {
    int x = kLeftMargin;
    int y = kInstructionsY;
    for (const std::string& line : lines) {
        if (isTab(line)) {
            x += kInstructionsStep;
        } else {
            drawText(painter, x, y, line.c_str());
            y += kInstructionsStep;
        }
    }
}

} // namespace

VEXAInterface::VEXAInterface(QWidget* parent) : QMainWindow(parent) {
    const FunctionTrace trace("VEXAInterface::VEXAInterface");
    setWindowTitle(QObject::tr(g_configParams.ApplicationName));
    setFixedSize(kWindowWidth, kWindowHeight);
    addComponents();
    loadingActive = false;
    findDevices();
    const std::vector<VEXADevice> devices = deviceManager.getDeviceList();
    VEXALog(kLogInfo, "Found connected (and supported) devices");
    for (const VEXADevice& device : devices) {
        deviceCombo->addItem(QString::fromStdString(device.getName()) +
                             " - PORT: " + shortPort(device.getPortCOM()));
    }
    VEXALog(kLogInfo, "Device list has been shown");
}

VEXAInterface::~VEXAInterface() {
    {
        const FunctionTrace trace("VEXAInterface::~VEXAInterface");
        delete deviceCombo;
        delete dbPathEdit;
        delete browseButton;
        delete loadButton;
        delete refreshButton;
        delete closeButton;
        delete cancelButton;
        delete progressBar;
        delete logoLabel;
        VEXALog(kLogInfo, "Logging has been finished");
    }
    VEXA_logstop();
}

void VEXAInterface::findDevices() {
    deviceManager.clearDeviceList();
    deviceManager.findSerialDevices();
    deviceManager.findAllPCSCDevices();
}

// Not traced: it runs whenever anything on the window changes.
void VEXAInterface::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(textPen(Qt::black));
    painter.setFont(QFont(kFontFamily, kHeadingPoints, QFont::Bold));
    drawText(painter, kLeftMargin, kHeadingY, g_configParams.ApplicationName);
    painter.setFont(QFont(kFontFamily, kTextPoints));
    drawCaption(painter, *deviceCombo, g_configParams.Device_list);
    drawCaption(painter, *browseButton, g_configParams.Database_file);
    drawCaption(painter, *progressBar, g_configParams.Loading_progress);
    drawInstructions(painter, g_configParams.ExplicativeText);
    painter.setPen(textPen(Qt::darkGray));
    drawText(painter, kLeftMargin, height() - kFooterFromBottom, g_configParams.copyright);
}
