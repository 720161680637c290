#pragma once

#include <QString>

namespace ZyHelp::Publish {

// Runs Qt's qhelpgenerator on a .qhp file. It exits 0 on many faults and only
// prints "Warning:", so every such line counts as a failure.
class HelpGenerator
{
public:
    explicit HelpGenerator(const QString &program = QString());

    // The program given, else the one beside Qt's tools, else one in PATH.
    QString program() const { return m_program; }
    bool run(const QString &qhpFile, const QString &qchFile);
    QString errorString() const { return m_errorString; }

private:
    QString m_program;
    QString m_errorString;
};

} // namespace ZyHelp::Publish
