#include "savefile.h"

#include <QSaveFile>

#include <cerrno>
#include <cstring>

namespace ZyHelp {

bool commitSaveFile(QSaveFile *file, bool complete, QString *errorString)
{
    QString error;
    if (!complete || !file->flush()) {
        // A write cut short leaves the device without an error of its own.
        error = file->error() != QFileDevice::NoError
            ? file->errorString()
            : QString::fromLocal8Bit(std::strerror(errno));
        file->cancelWriting();
    }
    if (!file->commit()) {
        *errorString = error.isEmpty() ? file->errorString() : error;
        return false;
    }
    return true;
}

} // namespace ZyHelp
