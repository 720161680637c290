#include "outputfolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdio>
#include <sys/stat.h>

namespace ZyHelp::Publish {

OutputFolder::OutputFolder(const QString &out)
    : m_out(QFileInfo(out).absoluteFilePath())
{
}

OutputFolder::~OutputFolder() = default;

bool OutputFolder::prepare()
{
    const QFileInfo info(m_out);
    if (info.exists() && !info.isDir()) {
        m_errorString = QStringLiteral("%1: exists and is no folder").arg(m_out);
        return false;
    }
    const QFileInfo parent(info.absolutePath());
    if (!parent.isDir()) {
        m_errorString = QStringLiteral("%1: no such folder").arg(parent.filePath());
        return false;
    }
    m_dir = std::make_unique<QTemporaryDir>(
        parent.filePath() + QStringLiteral("/.%1.new-XXXXXX").arg(info.fileName()));
    if (!m_dir->isValid()) {
        m_errorString =
            QStringLiteral("%1: cannot write beside it: %2").arg(m_out, m_dir->errorString());
        return false;
    }
    // A temporary folder is private; the output is to be read by others as
    // any folder the user makes.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (::chmod(QFile::encodeName(m_dir->path()).constData(), 0777 & ~mask) != 0) {
        m_errorString = QStringLiteral("%1: cannot set its permissions").arg(m_dir->path());
        return false;
    }
    return true;
}

QString OutputFolder::path() const
{
    return m_dir ? m_dir->path() : QString();
}

bool OutputFolder::commit()
{
    const QByteArray out = QFile::encodeName(m_out);
    QByteArray old;
    if (QFileInfo::exists(m_out)) {
        const QFileInfo info(m_out);
        QTemporaryDir oldPlace(info.absolutePath()
                               + QStringLiteral("/.%1.old-XXXXXX").arg(info.fileName()));
        oldPlace.setAutoRemove(false);
        old = QFile::encodeName(oldPlace.path());
        if (!oldPlace.isValid() || std::rename(out.constData(), old.constData()) != 0) {
            m_errorString = QStringLiteral("%1: cannot move the old output aside").arg(m_out);
            return false;
        }
    }
    if (std::rename(QFile::encodeName(m_dir->path()).constData(), out.constData()) != 0) {
        if (!old.isEmpty())
            std::rename(old.constData(), out.constData());
        m_errorString = QStringLiteral("%1: cannot put the new output in place").arg(m_out);
        return false;
    }
    m_dir->setAutoRemove(false);
    if (!old.isEmpty())
        QDir(QFile::decodeName(old)).removeRecursively();
    return true;
}

} // namespace ZyHelp::Publish
