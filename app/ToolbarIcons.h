#pragma once

#include <QIcon>
#include <QString>

// The image of a toolbar button (its key, theme name and drawing from the command table): the
// desktop icon theme's where it has the named icon, otherwise the program's drawing. Never an
// empty icon.
QIcon ToolbarIcon(const QString &key, const QString &theme, const QString &drawing);
// The program's own drawing of a button; the key chooses the colour of its group.
QIcon DrawnToolbarIcon(const QString &key, const QString &drawing);

// The application's icon.
QIcon ApplicationIcon();
