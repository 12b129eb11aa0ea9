#pragma once

#include "util/ErrorLog.h"

#include <QString>
#include <QStringList>

// The start of the program: the command line and file names. The error and log convention is
// in util/ErrorLog.h.
namespace modMain {

// The name expanded to a full path ("" for an empty name).
QString FullPathName(const QString &fileName);

// The existing files named on the command line, as full paths: each argument is one name.
QStringList GetCommandLineFiles(const QStringList &arguments);
QStringList GetCommandLineFiles(); // from the running application's arguments

} // namespace modMain
