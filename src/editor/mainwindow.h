#pragma once

#include "documentcache.h"
#include "helpdata.h"
#include "projectmanager.h"

#include <QList>
#include <QMainWindow>
#include <QMap>
#include <QPersistentModelIndex>
#include <QSet>
#include <QString>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QTreeWidget;
class QTreeWidgetItem;
QT_END_NAMESPACE

class Ui_MainWindow;

// The folder node called name directly under parent (the tree's top level when
// parent is null), made when there is none yet. Never returns null.
QTreeWidgetItem *getFolderItem(QTreeWidget *tree, QTreeWidgetItem *parent, const QString &name);

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    // What a project tree node stands for, kept in column 0 of the node.
    enum ItemRole {
        ItemTypeRole = Qt::UserRole + 1,
        FilePathRole,
        LangKeyRole,
        SectionIndexRole,
    };
    enum ItemType {
        TypeFolder = 100,
        TypeFile = 200,
        TypeLanguage = 300,
        TypeSection = 400,
    };

    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // Opens the project file at path as "Projekt öffnen..." does. A path that is
    // no readable project file gets a warning box naming it; nothing is opened.
    // An empty path opens nothing and says nothing.
    bool openProjectFile(const QString &path);

private slots:
    void on_projectTree_itemClicked(QTreeWidgetItem *item, int column);
    void on_btnAddLink_clicked();
    void on_btnRemoveLink_clicked();
    void on_actionNewProject_triggered();
    void on_actionOpenProject_triggered();
    void on_actionNewFile_triggered();
    void on_actionReload_triggered();
    void on_actionRegisterPath_triggered();
    void on_actionSave_triggered();
    void on_projectTree_customContextMenuRequested(const QPoint &pos);
    void addLanguage(QString filePath);
    void addSection(QString filePath, QString langKey);
    void deleteItem(QTreeWidgetItem *item);

private:
    void loadProjectView();
    bool updateDocuments(const QStringList &filePaths);
    void syncUiToData();
    void saveFile(const QString &filePath);
    QString keepOriginal(const QString &filePath);

    Ui_MainWindow *ui;
    ZyHelp::HelpWriter m_writer;
    ZyHelp::ProjectManager m_projectManager;
    ZyHelp::DocumentCache m_documents;
    QMap<QString, ZyHelp::HelpData> m_helpFiles;
    QSet<QString> m_partlyRead; // documents whose last read stopped at a fault
    QStringList m_listedPaths; // the project's documents at the last rebuild
    QList<QTreeWidgetItem *> m_documentItems; // the file nodes, in the order of m_helpFiles
    QList<QPersistentModelIndex> m_collapsedNodes; // since the last rebuild
    QTreeWidgetItem *m_currentItem = nullptr;
    QSet<QString> m_keptOriginals; // documents whose original was kept in this session
};
