#include "app/modMain.h"

#include "util/modString.h"

#include <QCoreApplication>
#include <QDir>

namespace modMain {

QString FullPathName(const QString &fileName) {
    PROC("modMain FullPathName");
    if (fileName.isEmpty()) {
        return {};
    }
    return QDir::cleanPath(QDir::current().absoluteFilePath(fileName));
}

QStringList GetCommandLineFiles(const QStringList &arguments) {
    PROC("modMain GetCommandLineFiles");
    // Each argument is one file name, blanks and all: the shell has already split the line.
    QStringList files;
    for (const QString &argument : arguments) {
        const QString name = FullPathName(argument);
        if (!argument.isEmpty() && modString::FileExists(name)) {
            files.append(name);
        }
    }
    return files;
}

QStringList GetCommandLineFiles() {
    return GetCommandLineFiles(QCoreApplication::arguments().mid(1));
}

} // namespace modMain
