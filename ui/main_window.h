// The program's only window: pick a database and a terminal, load, follow, cancel.
//
// The captions are painted on it, at places computed from its widgets; all texts that operators may
// change come from the settings.
//
// Owner: the window owns its widgets. The workers that it starts outlive it, see load_worker.h.
// Threads: the main thread only; what a worker reports arrives there queued.
// Failure: shown in a message box where the operator can do something about it, else logged.
#pragma once

#include "devices/device_manager.h"

#include <QMainWindow>
#include <QString>

#include <string>

class QComboBox;
class QLabel;
class QLineEdit;
class QMessageBox;
class QProgressBar;
class QPushButton;

class VEXAInterface : public QMainWindow {
    Q_OBJECT

public:
    /// Builds the whole window, lists the connected terminals, and does not show it.
    explicit VEXAInterface(QWidget* parent = nullptr);

    /// Closes the log as well.
    ~VEXAInterface() override;

    /// Creates, sizes, places and wires the widgets; for the constructor.
    void addComponents();

protected:
    void paintEvent(QPaintEvent* event) override;

public slots:
    /// Starts to load the chosen database into the chosen terminal.
    void slot_load();
    /// Lets the operator choose a database, and remembers it for the next start.
    void slot_selectDb();
    /// Lists the connected terminals anew.
    void slot_loadDevices();
    /// Closes the window, also in the middle of a load.
    void slot_close();
    /// Tells the end of a load. \param messageCode a LoadResult
    void slot_showMessage(int messageCode);
    /// Tells the end of a load. \param message why it ended, translated
    void slot_showNACK(QString message);
    /// \param progress percentage; above 20 MiB it may be wrong, even negative
    void slot_showProgress(int progress);

private:
    void addLogo();
    void addDatabaseField();
    void addDeviceList();
    void addBrowseButton();
    void addRefreshButton();
    void addProgressBar();
    void addCancelButton();
    void addLoadButton();
    void addCloseButton();
    void addProgressLabel();
    void describeComponents();

    void findDevices();
    void startLoad(const VEXADevice& device, const std::string& database);
    void showAndReturnToIdle(QMessageBox& message);
    void applyLoadingState();
    void applyIdleState();
    void applyLoadAllowedRule();

    VEXADeviceManager deviceManager;
    QComboBox* deviceCombo = nullptr; ///< one entry for each device of the list, in its order
    QLineEdit* dbPathEdit = nullptr;
    QPushButton* browseButton = nullptr;
    QPushButton* loadButton = nullptr;
    QPushButton* refreshButton = nullptr;
    QPushButton* closeButton = nullptr;
    QPushButton* cancelButton = nullptr;
    QProgressBar* progressBar = nullptr;
    QLabel* progressLabel = nullptr;
    QString lastDbPath; ///< where the file dialog opens
    QLabel* logoLabel = nullptr;
    /// From the start of a load until its message has been closed. Nothing depends on it.
    bool loadingActive = false;
};
