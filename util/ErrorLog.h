#pragma once

#include <QString>

#include <exception>
#include <functional>
#include <type_traits>
#include <utility>

// The error and log convention every layer uses: the procedure name, run-time errors, the one
// error report and the session log.
namespace modMain {

// Name of the procedure entered last: module name, one blank, procedure name. Never restored on
// return, so after a nested call it names the callee. Each thread has its own (the search decodes
// texts on worker threads).
extern thread_local QString CurrentProcName;

// Classic run-time error numbers.
enum ErrorNumber : qint32 {
    errInvalidProcedureCall = 5,
    errOverflow = 6,
    errOutOfMemory = 7,
    errSubscriptOutOfRange = 9,
    errTypeMismatch = 13,
    errInternal = 51,
    errBadFileNameOrNumber = 52,
    errFileNotFound = 53,
    errBadFileMode = 54,
    errDeviceIO = 57,
    errFileAlreadyExists = 58,
    errDiskFull = 61,
    errInputPastEnd = 62,
    errPermissionDenied = 70,
    errPathFileAccess = 75,
    errPathNotFound = 76,
    errObjectRequired = 424,
    errObjectBase = -2147221504, // 0x80040000, base of component-defined errors
};

// A run-time error on its way from where it happened to ReportError.
class RuntimeError : public std::exception {
public:
    RuntimeError(qint32 number, QString description = {}, QString source = {});
    qint32 Number;
    QString Description;
    QString Source;
    const char *what() const noexcept override;

private:
    QByteArray m_what;
};

// The classic description of an error number ("File not found" for 53).
QString ErrorDescription(qint32 number);

// Raises a run-time error of the program's own code (source: the application title).
[[noreturn]] void Raise(qint32 number, const QString &description = {});

// The pending error, as ReportError reads it (one for each thread).
struct PendingError {
    qint32 Number = 0;
    QString Description;
    QString Source;
};
extern thread_local PendingError Err;

// Writes the pending error to the session log (two lines) and, on the main thread, resets the
// mouse pointer.
void ReportError();

// Carries any exception of the running procedure to ReportError. Returns the procedure's result,
// or the fallback (the default value) when it ended in an error.
template <class F, class R = std::invoke_result_t<F>> R Guarded(F &&body, R fallback = R{}) {
    try {
        return std::forward<F>(body)();
    } catch (const RuntimeError &e) {
        Err = {e.Number, e.Description, e.Source};
    } catch (const std::bad_alloc &) {
        Err = {errOutOfMemory, ErrorDescription(errOutOfMemory), QStringLiteral("Mavrolen")};
    } catch (const std::exception &e) {
        Err = {errInternal, QString::fromLocal8Bit(e.what()), QStringLiteral("Mavrolen")};
    }
    ReportError();
    return fallback;
}

template <class F>
requires std::is_void_v<std::invoke_result_t<F>>
void Guarded(F &&body) {
    Guarded([&] {
        std::forward<F>(body)();
        return true;
    });
}

// The session log "Mavrolen.log" beside the program (or, when that folder cannot be written,
// in the user's data folder).
QString LogPath();
void SetLogPath(const QString &path); // for tests; empty restores the default
void WriteLog(const QString &message);

// Date and time in the user's short formats, one blank between them.
QString NowText();

// The directory that holds the program file (the log is kept there).
QString ProgramDirectory();

} // namespace modMain

// Every procedure names itself first thing.
#define PROC(name) (::modMain::CurrentProcName = QStringLiteral(name))
