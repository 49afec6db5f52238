// The yardstick of the window: one of the same size that does nothing.

#include <QApplication>
#include <QMainWindow>

int main(int argc, char* argv[]) {
    const QApplication application(argc, argv);
    QMainWindow window;
    window.setFixedSize(570, 430);
    window.show();
    return QApplication::exec();
}
