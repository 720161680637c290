#pragma once

#include <QString>
#include <QStringList>

namespace ZyHelp {

// The one open project: its name, root folder, project file and help documents.
// A project is open exactly while rootPath() is not empty.
class ProjectManager
{
public:
    ProjectManager();
    ~ProjectManager();

    ProjectManager(const ProjectManager &) = delete;
    ProjectManager &operator=(const ProjectManager &) = delete;

    QString projectName() const;
    QString rootPath() const;
    QStringList files() const;

    bool saveProject();
    void refreshFileList();
    void addFileToProject(const QString &path);
    void removeFileFromProject(const QString &path, bool deleteFromDisk);
    void registerPathInGlobalConfig();
    bool createProject(const QString &directory, const QString &name);
    bool openProject(const QString &path);

private:
    QString m_projectName;
    QString m_rootPath;
    QString m_projectFilePath;
    QStringList m_files;
};

} // namespace ZyHelp
