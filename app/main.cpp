#include "app/ToolbarIcons.h"
#include "app/frmMain.h"
#include "app/modMain.h"
#include "help/frmAbout.h"

#include <QApplication>
#include <QIcon>

int main(int argc, char *argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Mavrolen"));
    QApplication::setApplicationVersion(QStringLiteral(MAVROLEN_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("mavrolen"));
    if (QIcon::themeName().isEmpty()) {
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    }
    QApplication::setWindowIcon(ApplicationIcon());
    PROC("modMain Main");

    // 1. The About window as a splash: no OK button, not waiting, painted at once.
    auto *splash = new frmAbout(true);
    splash->show();
    splash->repaint();
    QApplication::processEvents();

    // 2. The main window loads; its load handler runs Initialise.
    frmMain frm;
    frm.MDIForm_Load();

    // 3. The splash goes.
    splash->close();
    delete splash;

    // 4. The main window shows.
    frm.show();
    return app.exec();
}
