#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace ZyHelp::Publish {

class SiteModel;

// The Qt Help project (.qhp) of one language: the contents tree as table of
// contents, every document as a keyword whose id is its link name, and the files.
class QhpWriter
{
public:
    QhpWriter(const SiteModel &model, const QString &projectName, const QString &language);

    QString helpNamespace() const;
    QByteArray project(const QStringList &extraFiles) const;
    // What qhelpgenerator would only warn about: a namespace or virtual folder
    // it cannot use, a referenced file missing below folder. Empty when fine.
    QStringList faults(const QString &folder) const;

private:
    const SiteModel &m_model;
    QString m_projectName;
    QString m_language;
};

} // namespace ZyHelp::Publish
