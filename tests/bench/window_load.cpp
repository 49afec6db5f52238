// A load from the window, watched from inside its event loop.
//
// window-load FILE PROCESSOR DATABASE
//   Loads the database into PAD 2 of the first terminal, on one processor, and writes into FILE, in
//   seconds: how long it took from the click on Load to the message at its end, and the longest
//   time for which the event loop did not come round meanwhile.

#include "configuration/config.h"
#include "ui/load_worker.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sched.h>

namespace {

/// Closes the message at the end of the load, and takes the time.
class EndWatch : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* box = qobject_cast<QMessageBox*>(watched);
        if (box != nullptr && event->type() == QEvent::Show) {
            text = box->text();
            taken = clock.nsecsElapsed();
            QTimer::singleShot(0, box, &QMessageBox::accept);
        }
        return false;
    }

    QElapsedTimer clock;
    qint64 taken = 0;
    QString text;
};

void stayOn(int processor) {
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(processor, &set);
    (void)sched_setaffinity(0, sizeof set, &set);
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc != 4) {
        return 64;
    }
    stayOn(std::atoi(argv[2]));
    const QApplication application(argc, argv);
    g_configParams = getDefaultConfig();
    VEXAInterface window;
    window.show();
    window.findChild<QLineEdit*>("dbPathEdit")->setText(QString::fromUtf8(argv[3]));
    EndWatch end;
    qApp->installEventFilter(&end);

    qint64 longest = 0;
    QElapsedTimer sinceLastTurn;
    QTimer turn;
    QObject::connect(&turn, &QTimer::timeout, [&] {
        longest = std::max(longest, sinceLastTurn.nsecsElapsed());
        sinceLastTurn.start();
    });
    sinceLastTurn.start();
    end.clock.start();
    turn.start(5); // leaves the processor to the worker
    window.findChild<QPushButton*>("loadButton")->click();
    while (end.taken == 0) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    (void)cancelAllLoads();
    std::FILE* file = std::fopen(argv[1], "w");
    if (file == nullptr || end.text != "Loading succeeded") {
        return 1;
    }
    constexpr double kNanosecond = 1e-9;
    (void)std::fprintf(file, "%.6f %.6f\n", kNanosecond * static_cast<double>(end.taken),
                       kNanosecond * static_cast<double>(longest));
    return std::fclose(file) == 0 ? 0 : 1;
}
