#pragma once

#include <QIcon>
#include <QString>

// The image of a toolbar button, by key: the desktop icon theme's where it has a fitting one,
// otherwise drawn by the program. Never an empty icon.
QIcon ToolbarIcon(const QString &key);
// The program's own drawing of a button (also used when the theme has no icon).
QIcon DrawnToolbarIcon(const QString &key);

// The application's icon.
QIcon ApplicationIcon();
