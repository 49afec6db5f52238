// The widgets of the window. Each is sized and placed by the widgets before it, as large as they
// have become: a minimum size enlarges a widget that is smaller, and leaves a larger one as it is.

#include "app/log.h"
#include "configuration/config.h"
#include "ui/main_window.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QProgressBar>
#include <QPushButton>
#include <QStringList>

#include <iterator>
#include <utility>

namespace {

constexpr int kGap = 10;
constexpr double kIconPart = 0.7;
constexpr double kButtonGrowth = 1.1;

QString picturePath(const char* name) {
    return QCoreApplication::applicationDirPath() + "/icons/" + name;
}

int scaled(int length, double factor) {
    return static_cast<int>(length * factor);
}

int rightOf(const QWidget& widget) {
    return widget.x() + widget.width() + kGap;
}

} // namespace

void VEXAInterface::addComponents() {
    const FunctionTrace trace("VEXAInterface::addComponents");
    setWindowIcon(QIcon(picturePath("HalvorinApp.icns")));
    addLogo();
    addDatabaseField();
    addDeviceList();
    addBrowseButton();
    addRefreshButton();
    addProgressBar();
    addCancelButton();
    addLoadButton();
    addCloseButton();
    addProgressLabel();
    describeComponents();
}

void VEXAInterface::addLogo() {
    constexpr int kFromRight = 2;
    const QPixmap pixmap(picturePath("logo_halvorin_turquoise_blue_sans_fond.png"));
    logoLabel = new QLabel(this);
    logoLabel->setPixmap(pixmap);
    logoLabel->setMinimumSize(pixmap.width(), pixmap.height());
    logoLabel->move(width() - kFromRight - pixmap.width(), kGap);
}

void VEXAInterface::addDatabaseField() {
    dbPathEdit = new QLineEdit(this);
    dbPathEdit->setMinimumSize(width() / 2, height() / 20);
    dbPathEdit->move(width() / 4 + 20, (height() * 2) / 5 + 40);
    dbPathEdit->setText(PreviousdbName);
    VEXALog(kLogInfo, "File browser has been added");
}

void VEXAInterface::addDeviceList() {
    deviceCombo = new QComboBox(this);
    deviceCombo->setMinimumSize(dbPathEdit->width(), dbPathEdit->height());
    deviceCombo->move(dbPathEdit->x(), dbPathEdit->y() + height() / 10);
    VEXALog(kLogInfo, "QComboBox for devices has been added");
}

void VEXAInterface::addBrowseButton() {
    browseButton = new QPushButton(QString::fromUtf8(g_configParams.Browse), this);
    browseButton->setIcon(QIcon(picturePath("fileBrowser.png")));
    // The icon goes by the size that the button has before it gets its own.
    browseButton->setIconSize(
        QSize(browseButton->width() / 3, scaled(browseButton->height(), kIconPart)));
    browseButton->setMinimumSize(width() / 7, scaled(deviceCombo->height(), kButtonGrowth));
    browseButton->move(rightOf(*dbPathEdit), dbPathEdit->y());
    connect(browseButton, &QPushButton::clicked, this, &VEXAInterface::slot_selectDb);
    VEXALog(kLogInfo, "File selection button has been added");
}

void VEXAInterface::addRefreshButton() {
    refreshButton = new QPushButton(QString::fromUtf8(g_configParams.Renew_devices), this);
    refreshButton->setMinimumSize(width() / 10, browseButton->height());
    refreshButton->move(rightOf(*deviceCombo),
                        deviceCombo->y() + deviceCombo->height() - refreshButton->height());
    connect(refreshButton, &QPushButton::clicked, this, &VEXAInterface::slot_loadDevices);
    VEXALog(kLogInfo, "Device list re-enumeration button has been added");
}

void VEXAInterface::addProgressBar() {
    progressBar = new QProgressBar(this);
    progressBar->setMinimumSize(deviceCombo->width(), deviceCombo->height());
    progressBar->move(deviceCombo->x(), deviceCombo->y() + 17 + height() / 20);
    progressBar->setAlignment(Qt::AlignCenter);
    progressBar->setValue(0);
    VEXALog(kLogInfo, "Progressbar has been added");
}

void VEXAInterface::addCancelButton() {
    cancelButton = new QPushButton(QString::fromUtf8(g_configParams.Cancel), this);
    cancelButton->setMinimumSize(browseButton->width(), browseButton->height());
    cancelButton->move(rightOf(*progressBar), progressBar->y());
    // Each load connects it to its own worker.
    VEXALog(kLogInfo, "Button for loading cancelling has been added");
}

void VEXAInterface::addLoadButton() {
    loadButton = new QPushButton(QString::fromUtf8(g_configParams.Button_load), this);
    loadButton->setIcon(QIcon(picturePath("vexaLoad.png")));
    loadButton->setMinimumSize(browseButton->width(), browseButton->height());
    loadButton->move(deviceCombo->x(), progressBar->y() + loadButton->height() + 30);
    connect(loadButton, &QPushButton::clicked, this, &VEXAInterface::slot_load);
    VEXALog(kLogInfo, "Database loading button has been added");
}

void VEXAInterface::addCloseButton() {
    closeButton = new QPushButton(QString::fromUtf8(g_configParams.Close_application), this);
    // The one widget with a maximum; intended.
    closeButton->setMaximumSize(refreshButton->width(), refreshButton->height());
    closeButton->move(rightOf(*loadButton), loadButton->y());
    connect(closeButton, &QPushButton::clicked, this, &VEXAInterface::slot_close);
    VEXALog(kLogInfo, "Close button has been added");
}

void VEXAInterface::addProgressLabel() {
    progressLabel = new QLabel(this);
    // From the middle of the bar's left edge, so over the bar; intended.
    progressLabel->move(progressBar->x(), progressBar->y() + progressBar->height() / 2);
}

/// Names for screen readers, which do not see the painted captions, and the way of the Tab key.
void VEXAInterface::describeComponents() {
    const std::pair<QWidget*, const char*> names[] = {
        {deviceCombo, "deviceCombo"},     {dbPathEdit, "dbPathEdit"},
        {browseButton, "browseButton"},   {loadButton, "loadButton"},
        {refreshButton, "refreshButton"}, {closeButton, "closeButton"},
        {cancelButton, "cancelButton"},   {progressBar, "progressBar"},
        {progressLabel, "progressLabel"}, {logoLabel, "logoLabel"},
    };
    for (const auto& [widget, name] : names) {
        widget->setObjectName(name);
    }
    dbPathEdit->setAccessibleName(QString::fromUtf8(g_configParams.Database_file));
    deviceCombo->setAccessibleName(QString::fromUtf8(g_configParams.Device_list));
    progressBar->setAccessibleName(QString::fromUtf8(g_configParams.Loading_progress));
    logoLabel->setAccessibleName(QString::fromUtf8(g_configParams.ApplicationName));
    for (QPushButton* button :
         {browseButton, refreshButton, loadButton, cancelButton, closeButton}) {
        button->setAccessibleName(button->text());
    }
    QStringList instructions;
    for (const std::string& line : g_configParams.ExplicativeText) {
        instructions += QString::fromStdString(line);
    }
    instructions.removeAll("[TAB]");
    setAccessibleDescription(instructions.join('\n'));

    QWidget* const order[] = {dbPathEdit, browseButton, deviceCombo, refreshButton,
                              loadButton, cancelButton, closeButton};
    for (std::size_t i = 1; i < std::size(order); ++i) {
        setTabOrder(order[i - 1], order[i]);
    }
}
