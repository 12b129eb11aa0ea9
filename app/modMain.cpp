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

QStringList GetCommandLineFiles(const QString &commandLine) {
    PROC("modMain GetCommandLineFiles");
    QStringList files;
    const QString line = modString::Trim(commandLine) + QLatin1Char(' ');
    qsizetype start = 0;
    qsizetype blank = line.indexOf(QLatin1Char(' '), start);
    while (blank >= 0) {
        const QString name = FullPathName(modString::Trim(line.mid(start, blank - start)));
        if (modString::FileExists(name)) {
            files.append(name);
        }
        start = blank + 1;
        blank = line.indexOf(QLatin1Char(' '), start);
    }
    return files;
}

QStringList GetCommandLineFiles() {
    const QStringList args = QCoreApplication::arguments().mid(1);
    return GetCommandLineFiles(args.join(QLatin1Char(' ')));
}

} // namespace modMain
