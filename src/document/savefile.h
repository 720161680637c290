#pragma once

#include <QString>

class QSaveFile;

namespace ZyHelp {

// Commits what was written to file only when all of it reached the disk, and
// otherwise discards it, so that the file it replaces stays as it was. Qt 6.4's
// QSaveFile commits a file that a size limit or a full disk cut short when only
// the flush within its commit meets the fault; a flush before it reports it.
// complete: every write returned the size it was given. errorString: why the
// file was not committed.
bool commitSaveFile(QSaveFile *file, bool complete, QString *errorString);

} // namespace ZyHelp
