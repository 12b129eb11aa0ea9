#pragma once

#include <QCoreApplication>
#include <QCursor>
#include <QGuiApplication>

// Shows the busy (wait) pointer for the life of the object, when there is a GUI application.
// The error report also resets the pointer, so a command that fails never leaves it busy.
class BusyPointer {
public:
    BusyPointer() : m_bShown(qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        if (m_bShown) {
            QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
        }
    }
    ~BusyPointer() {
        if (m_bShown && QGuiApplication::overrideCursor()) {
            QGuiApplication::restoreOverrideCursor();
        }
    }
    BusyPointer(const BusyPointer &) = delete;
    BusyPointer &operator=(const BusyPointer &) = delete;

private:
    bool m_bShown;
};
