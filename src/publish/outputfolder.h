#pragma once

#include <QString>

#include <memory>

class QTemporaryDir;

namespace ZyHelp::Publish {

// The output is written into a new folder beside OUT, which takes OUT's
// place only when complete: a publish that fails leaves the old output as it was.
class OutputFolder
{
public:
    explicit OutputFolder(const QString &out);
    ~OutputFolder();

    // Makes the new folder, with the permissions the umask gives. False, with
    // errorString(), where OUT is no folder or its parent cannot be written.
    bool prepare();
    QString path() const;
    // Puts the new folder in OUT's place and removes the old output.
    bool commit();
    QString errorString() const { return m_errorString; }

private:
    QString m_out;
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_errorString;
};

} // namespace ZyHelp::Publish
