// Where everything stands in the window, and how it looks.

#include "tests/window/scripted_window.h"

#include <QCoreApplication>
#include <QPainter>

namespace {

class LayoutTest : public ScriptedWindowTest {
protected:
    QRect place(const char* name) const { return child<QWidget>(name)->geometry(); }

    /// What is painted on the window itself, without its widgets.
    QImage painted() const {
        QImage image(m_window->size(), QImage::Format_RGB32);
        m_window->render(&image, QPoint(), QRegion(), QWidget::DrawWindowBackground);
        return image;
    }

    /// A picture of the empty window.
    QImage background() const {
        QImage image(570, 430, QImage::Format_RGB32);
        image.fill(m_window->palette().color(QPalette::Window));
        return image;
    }

    static void draw(QPainter& painter, int x, int y, const char* text) {
        painter.drawText(QPointF(x, y), QString::fromUtf8(text));
    }
};

TEST_F(LayoutTest, EveryWidgetStandsAtItsPlace) {
    openWindow();
    EXPECT_EQ(m_window->minimumSize(), QSize(570, 430));
    EXPECT_EQ(m_window->maximumSize(), QSize(570, 430));
    EXPECT_EQ(place("logoLabel"), QRect(418, 10, 150, 66));
    EXPECT_EQ(place("dbPathEdit"), QRect(162, 212, 285, 30));
    EXPECT_EQ(place("deviceCombo"), QRect(162, 255, 285, 30));
    EXPECT_EQ(place("browseButton"), QRect(457, 212, 100, 33));
    EXPECT_EQ(place("refreshButton"), QRect(457, 252, 100, 33));
    EXPECT_EQ(place("progressBar"), QRect(162, 293, 285, 30));
    EXPECT_EQ(place("cancelButton"), QRect(457, 293, 100, 33));
    EXPECT_EQ(place("loadButton"), QRect(162, 356, 100, 33));
    EXPECT_EQ(place("closeButton"), QRect(272, 356, 100, 30));
    EXPECT_EQ(place("progressLabel"), QRect(162, 308, 100, 30));
}

TEST_F(LayoutTest, TheLimitsOfTheSizesAreThoseOfTheirRules) {
    openWindow();
    EXPECT_EQ(child<QWidget>("logoLabel")->minimumSize(), QSize(150, 66));
    EXPECT_EQ(child<QWidget>("dbPathEdit")->minimumSize(), QSize(285, 21));
    EXPECT_EQ(child<QWidget>("deviceCombo")->minimumSize(), QSize(285, 30));
    EXPECT_EQ(child<QWidget>("browseButton")->minimumSize(), QSize(81, 33));
    EXPECT_EQ(child<QWidget>("refreshButton")->minimumSize(), QSize(57, 33));
    EXPECT_EQ(child<QWidget>("progressBar")->minimumSize(), QSize(285, 30));
    EXPECT_EQ(child<QWidget>("cancelButton")->minimumSize(), QSize(100, 33));
    EXPECT_EQ(child<QWidget>("loadButton")->minimumSize(), QSize(100, 33));
    EXPECT_EQ(child<QWidget>("closeButton")->maximumSize(), QSize(100, 33));
    EXPECT_EQ(child<QWidget>("closeButton")->minimumSize(), QSize(0, 0));
    EXPECT_EQ(child<QWidget>("progressLabel")->minimumSize(), QSize(0, 0));
}

TEST_F(LayoutTest, TheWidgetsShowWhatTheyAreSetTo) {
    PreviousdbName = "/home/é/my.db";
    openWindow();
    EXPECT_EQ(m_window->windowTitle(), "VEXA");
    EXPECT_EQ(databaseField()->text(), "/home/é/my.db");
    EXPECT_EQ(button("browseButton")->text(), "Browse");
    EXPECT_EQ(button("refreshButton")->text(), "Refresh");
    EXPECT_EQ(button("cancelButton")->text(), "Cancel");
    EXPECT_EQ(button("loadButton")->text(), "Load");
    EXPECT_EQ(button("closeButton")->text(), "Close");
    EXPECT_EQ(bar()->value(), 0);
    EXPECT_EQ(bar()->minimum(), 0);
    EXPECT_EQ(bar()->maximum(), 100);
    EXPECT_EQ(bar()->alignment(), Qt::Alignment(0x84));
    EXPECT_EQ(percentage()->text(), "");
}

TEST_F(LayoutTest, ThePicturesComeFromBesideTheExecutable) {
    openWindow();
    EXPECT_FALSE(m_window->windowIcon().isNull());
    EXPECT_TRUE(m_window->windowIcon().availableSizes().contains(QSize(256, 256)));
    EXPECT_EQ(child<QLabel>("logoLabel")->pixmap(Qt::ReturnByValue).size(), QSize(150, 66));
    EXPECT_EQ(button("browseButton")->icon().availableSizes(), QList<QSize>({QSize(64, 64)}));
    EXPECT_EQ(button("browseButton")->iconSize(), QSize(33, 21));
    EXPECT_EQ(button("loadButton")->icon().availableSizes(), QList<QSize>({QSize(64, 64)}));
    EXPECT_EQ(button("loadButton")->iconSize(), QPushButton().iconSize());
}

TEST_F(LayoutTest, TheTextsArePaintedAtTheirPlaces) {
    openWindow();
    QImage expected = background();
    QPainter painter(&expected);
    painter.setPen(Qt::black);
    painter.setFont(QFont("Arial", 16, QFont::Bold));
    draw(painter, 10, 30, "VEXA");
    painter.setFont(QFont("Arial", 14));
    draw(painter, 10, 275, "Device list");
    draw(painter, 10, 233, "Database file");
    draw(painter, 10, 313, "Loading progress");
    draw(painter, 10, 70, "Welcome to VEXA database loader !");
    draw(painter, 40, 100, "1. Click 'Browse' to choose a database file (.db)");
    draw(painter, 40, 130,
         "2. Select a device in 'Device list' (Click on 'Refresh' if neccessary)");
    draw(painter, 40, 160, "3. Select a PAD number");
    draw(painter, 40, 190, "4. Click 'Load'");
    painter.setPen(Qt::darkGray);
    draw(painter, 10, 415, "The foot");
    painter.end();
    EXPECT_NE(expected, background());
    EXPECT_EQ(painted(), expected);
}

TEST_F(LayoutTest, EachTabMovesAllLinesAfterItToTheRight) {
    g_configParams = VEXAConfig{};
    g_configParams.ExplicativeText = {"A", "[TAB]", "B", "[TAB]\r", "C", "[TAB] ", ""};
    openWindow();
    QImage expected = background();
    QPainter painter(&expected);
    painter.setPen(Qt::black);
    painter.setFont(QFont("Arial", 14));
    draw(painter, 10, 70, "A");
    draw(painter, 40, 100, "B");
    draw(painter, 70, 130, "C");
    draw(painter, 70, 160, "[TAB] ");
    painter.end();
    EXPECT_EQ(painted(), expected);
}

TEST_F(LayoutTest, LongAndForeignCaptionsAreShownAsTheyStandAndMoveNothing) {
    const char* const caption = "Очень длинная подпись, 長い説明, تسمية طويلة & <b>\"Ω\"</b>";
    for (auto field : {&VEXAConfig::ApplicationName, &VEXAConfig::Browse, &VEXAConfig::Button_load,
                       &VEXAConfig::Cancel, &VEXAConfig::Renew_devices,
                       &VEXAConfig::Close_application, &VEXAConfig::Database_file}) {
        storeText(g_configParams.*field, caption);
    }
    openWindow();
    EXPECT_EQ(m_window->windowTitle(), caption);
    for (const char* name :
         {"browseButton", "refreshButton", "cancelButton", "loadButton", "closeButton"}) {
        EXPECT_EQ(button(name)->text(), caption);
    }
    EXPECT_EQ(m_window->size(), QSize(570, 430));
    EXPECT_EQ(place("browseButton"), QRect(457, 212, 100, 33));
    EXPECT_EQ(place("closeButton"), QRect(272, 356, 100, 30));
}

TEST_F(LayoutTest, TheLogoLeavesThePaintedTextsFree) {
    openWindow();
    const QFontMetrics metrics(QFont("Arial", 14));
    const QRect logo = place("logoLabel");
    // The widest lines of the French default file, beside the logo and below it.
    for (const auto& [y, text] :
         {std::pair<int, const char*>(100, "1. Cliquer sur 'Parcourir' pour choisir une base de "
                                           "données (.db)"),
          {130, "2. Choisir un périphérique dans 'Périphériques' (Cliquer "
                "sur 'Rafraîchir' si besoin)"}}) {
        const QRect line = metrics.boundingRect(QString::fromUtf8(text)).translated(40, y);
        EXPECT_FALSE(line.intersects(logo)) << text;
        EXPECT_LE(line.right(), 570) << text;
    }
    const QRect caption = metrics.boundingRect("Progrès du chargement").translated(10, 313);
    EXPECT_LT(caption.right(), place("progressBar").left());
}

TEST_F(LayoutTest, ConstructionIsLoggedStepByStep) {
    const LogCapture log;
    m_window = std::make_unique<VEXAInterface>();
    std::vector<std::string> steps;
    for (const std::string& line : log.lines()) {
        if (line.find("VEXAInterface") != std::string::npos || line.find("has been") != line.npos ||
            line.find("have been") != line.npos || line.find("Found") != line.npos) {
            steps.push_back(line);
        }
    }
    EXPECT_EQ(
        steps,
        std::vector<std::string>(
            {"VEXALD => VEXAInterface::VEXAInterface", "VEXALD => VEXAInterface::addComponents",
             "VEXALD File browser has been added", "VEXALD QComboBox for devices has been added",
             "VEXALD File selection button has been added",
             "VEXALD Device list re-enumeration button has been "
             "added",
             "VEXALD Progressbar has been added",
             "VEXALD Button for loading cancelling has been "
             "added",
             "VEXALD Database loading button has been added", "VEXALD Close button has been added",
             "VEXALD <= VEXAInterface::addComponents",
             "VEXALD Found connected (and supported) devices", "VEXALD Device list has been shown",
             "VEXALD <= VEXAInterface::VEXAInterface"}));
}

TEST_F(LayoutTest, TheEndOfTheWindowIsTheEndOfTheLog) {
    const QString file = path("log");
    m_window = std::make_unique<VEXAInterface>();
    g_logfileStream = std::fopen(file.toUtf8().constData(), "w");
    m_window.reset();
    EXPECT_EQ(g_logfileStream, nullptr);
    EXPECT_EQ(logLines(file), QStringList({"VEXALD => VEXAInterface::~VEXAInterface",
                                           "VEXALD Logging has been finished",
                                           "VEXALD <= VEXAInterface::~VEXAInterface"}));
}

TEST_F(LayoutTest, TheSlotsAreDeclaredAsKnown) {
    const QMetaObject& meta = VEXAInterface::staticMetaObject;
    QByteArrayList names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        EXPECT_EQ(meta.method(i).methodType(), QMetaMethod::Slot);
        names << meta.method(i).methodSignature();
    }
    EXPECT_EQ(names, QByteArrayList({"slot_load()", "slot_selectDb()", "slot_loadDevices()",
                                     "slot_close()", "slot_showMessage(int)",
                                     "slot_showNACK(QString)", "slot_showProgress(int)"}));
}

} // namespace
