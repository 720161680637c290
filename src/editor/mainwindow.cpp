#include "mainwindow.h"
#include "ui_mainwindow.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QStyle>

#include <utility>
#include <vector>

namespace {

// A document, language or section node. Its text and what it stands for are
// read through the data roles of column 0 like on any node, but kept in members:
// QTreeWidgetItem keeps them in lists of its own, two more allocations per node
// and a copy of the list on every setData.
class ProjectItem : public QTreeWidgetItem
{
public:
    ProjectItem(int kind, const QString &text, const QString &filePath,
                const QString &langKey = QString(), int sectionIndex = -1)
        : m_kind(kind)
        , m_sectionIndex(sectionIndex)
        , m_text(text)
        , m_filePath(filePath)
        , m_langKey(langKey)
    {
    }

    QVariant data(int column, int role) const override
    {
        if (column == 0) {
            switch (role) {
            case Qt::DisplayRole:
            case Qt::EditRole:
                return m_text;
            case MainWindow::ItemTypeRole:
                return m_kind;
            case MainWindow::FilePathRole:
                return m_filePath;
            case MainWindow::LangKeyRole:
                return m_kind == MainWindow::TypeFile ? QVariant() : QVariant(m_langKey);
            case MainWindow::SectionIndexRole:
                return m_kind == MainWindow::TypeSection ? QVariant(m_sectionIndex) : QVariant();
            default:
                break;
            }
        }
        return QTreeWidgetItem::data(column, role);
    }

    void setData(int column, int role, const QVariant &value) override
    {
        if (column != 0 || !setOwnData(role, value)) {
            QTreeWidgetItem::setData(column, role, value);
            return;
        }
        emitDataChanged();
    }

    QTreeWidgetItem *clone() const override { return new ProjectItem(*this); }

private:
    ProjectItem(const ProjectItem &other) = default;

    bool setOwnData(int role, const QVariant &value)
    {
        switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            m_text = value.toString();
            return true;
        case MainWindow::ItemTypeRole:
            m_kind = value.toInt();
            return true;
        case MainWindow::FilePathRole:
            m_filePath = value.toString();
            return true;
        case MainWindow::LangKeyRole:
            m_langKey = value.toString();
            return true;
        case MainWindow::SectionIndexRole:
            m_sectionIndex = value.toInt();
            return true;
        default:
            return false;
        }
    }

    int m_kind;
    int m_sectionIndex;
    QString m_text;
    QString m_filePath;
    QString m_langKey;
};

// The language and section nodes of a document, not yet in a tree.
QList<QTreeWidgetItem *> languageNodes(const QString &filePath, const ZyHelp::HelpData &document)
{
    QList<QTreeWidgetItem *> nodes;
    nodes.reserve(document.languages.size());
    for (auto lang = document.languages.cbegin(); lang != document.languages.cend(); ++lang) {
        auto *langItem =
            new ProjectItem(MainWindow::TypeLanguage, lang.key(), filePath, lang.key());
        for (qsizetype i = 0; i < lang->sections.size(); ++i) {
            auto *sectionItem = new ProjectItem(MainWindow::TypeSection, lang->sections.at(i).name,
                                                filePath, lang.key(), int(i));
            // Else expandAll() keeps every section as an expanded node, with a
            // persistent index each: most of its time.
            sectionItem->setFlags(sectionItem->flags() | Qt::ItemNeverHasChildren);
            langItem->addChild(sectionItem);
        }
        nodes.append(langItem);
    }
    return nodes;
}

// A document's file node with its language and section nodes, in no tree yet and
// without its icon: a node in no tree belongs to no view and may be made on any
// thread, an icon only on the GUI thread.
QTreeWidgetItem *documentBranch(const QString &entry, const QString &filePath,
                                const ZyHelp::HelpData &document)
{
    const QString fileName = entry.mid(entry.lastIndexOf(QLatin1Char('/')) + 1);
    auto *fileItem = new ProjectItem(MainWindow::TypeFile, fileName, filePath);
    fileItem->addChildren(languageNodes(filePath, document));
    return fileItem;
}

// The wait cursor for as long as it lives.
class WaitCursor
{
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }

private:
    Q_DISABLE_COPY(WaitCursor)
};

// One of the style's standard icons. Asking the style for one costs more than all
// the rest of making a folder node, so each style is asked once per icon; the
// icons are kept on the style and go with it.
QIcon styleIcon(QStyle::StandardPixmap pixmap)
{
    QStyle *style = QApplication::style();
    const QByteArray key = "_zyhelp_icon_" + QByteArray::number(int(pixmap));
    QVariant icon = style->property(key.constData());
    if (!icon.isValid()) {
        icon = QVariant::fromValue(style->standardIcon(pixmap));
        style->setProperty(key.constData(), icon);
    }
    return icon.value<QIcon>();
}

bool isFolderNamed(const QTreeWidgetItem *item, const QString &name)
{
    return item->text(0) == name
        && item->data(0, MainWindow::ItemTypeRole).toInt() == MainWindow::TypeFolder;
}

QTreeWidgetItem *newFolderItem(const QString &name)
{
    auto *folder = new QTreeWidgetItem;
    folder->setText(0, name);
    folder->setIcon(0, styleIcon(QStyle::SP_DirIcon));
    folder->setData(0, MainWindow::ItemTypeRole, MainWindow::TypeFolder);
    return folder;
}

// The project tree put together outside the view, which is then told about it
// once instead of once per document. Folders are found and made as getFolderItem
// does it in the tree.
class DetachedTree
{
public:
    // Hangs a file node under the folders of its entry.
    void add(const QString &entry, QTreeWidgetItem *fileItem)
    {
        const qsizetype slash = entry.lastIndexOf(QLatin1Char('/'));
        if (slash < 0) {
            m_topLevel.append(fileItem);
            return;
        }
        // The list is sorted, so mostly the folders of the entry before: the walk
        // would find the same nodes again.
        const QString folders = entry.left(slash);
        if (!m_lastParent || folders != m_lastFolders) {
            QTreeWidgetItem *parent = nullptr;
            for (const QString &name : folders.split(QLatin1Char('/')))
                parent = parent ? getFolderItem(nullptr, parent, name) : topLevelFolder(name);
            m_lastFolders = folders;
            m_lastParent = parent;
        }
        m_lastParent->addChild(fileItem);
    }

    // The top-level nodes, for the tree to take over.
    QList<QTreeWidgetItem *> takeTopLevel() { return std::exchange(m_topLevel, {}); }

private:
    QTreeWidgetItem *topLevelFolder(const QString &name)
    {
        for (QTreeWidgetItem *item : std::as_const(m_topLevel)) {
            if (isFolderNamed(item, name))
                return item;
        }
        m_topLevel.append(newFolderItem(name));
        return m_topLevel.constLast();
    }

    QList<QTreeWidgetItem *> m_topLevel;
    QString m_lastFolders;
    QTreeWidgetItem *m_lastParent = nullptr;
};

} // namespace

QTreeWidgetItem *getFolderItem(QTreeWidget *tree, QTreeWidgetItem *parent, const QString &name)
{
    const int count = parent ? parent->childCount() : tree->topLevelItemCount();
    for (int i = 0; i < count; ++i) {
        QTreeWidgetItem *child = parent ? parent->child(i) : tree->topLevelItem(i);
        if (isFolderNamed(child, name))
            return child;
    }

    QTreeWidgetItem *folder = newFolderItem(name);
    if (parent)
        parent->addChild(folder);
    else
        tree->addTopLevelItem(folder);
    return folder;
}

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui_MainWindow)
{
    // The form has no entry for registering the project's folders; the action is
    // made before the form so that its slot is connected by name like the others.
    auto *actionRegisterPath = new QAction(this);
    actionRegisterPath->setObjectName(QStringLiteral("actionRegisterPath"));

    ui->setupUi(this);

    actionRegisterPath->setText(tr("Projektordner registrieren"));
    ui->menuDatei->addSeparator();
    ui->menuDatei->addAction(actionRegisterPath);

    ui->projectTree->setContextMenuPolicy(Qt::CustomContextMenu);
    // A rebuild expands every node again, as the full one does.
    connect(ui->projectTree, &QTreeView::collapsed, this,
            [this](const QModelIndex &index) { m_collapsedNodes.append(index); });
    connect(ui->btnSaveFile, &QPushButton::clicked, this, &MainWindow::on_actionSave_triggered);
    connect(ui->btnSaveSection, &QPushButton::clicked, this, &MainWindow::on_actionSave_triggered);
    connect(ui->btnSaveLang, &QPushButton::clicked, this, &MainWindow::on_actionSave_triggered);
}

MainWindow::~MainWindow()
{
    delete ui;
}

// ---- Project tree -------------------------------------------------------------

void MainWindow::loadProjectView()
{
    const WaitCursor waitCursor;
    m_currentItem = nullptr;
    setWindowTitle(tr("Editor - ") + m_projectManager.projectName());

    const QDir root(m_projectManager.rootPath());
    const QStringList entries = m_projectManager.files();
    QStringList filePaths;
    filePaths.reserve(entries.size());
    for (const QString &entry : entries)
        filePaths.append(root.filePath(entry));

    // The same list as last time: the nodes stay, and only those of documents that
    // changed are made anew. Otherwise all are made while the documents are read.
    const bool sameList = filePaths == m_listedPaths;
    m_listedPaths = filePaths;
    if (sameList && updateDocuments(filePaths))
        return;

    ui->projectTree->clear();
    m_documentItems.clear();
    m_helpFiles.clear();
    m_partlyRead.clear();
    // A document's nodes are made by the pool thread that reads it; this thread
    // hangs each branch under its folders, in list order.
    std::vector<QTreeWidgetItem *> branches(size_t(filePaths.size()), nullptr);
    const auto prepare = [&](qsizetype i, const ZyHelp::DocumentCache::Document &document) {
        branches[size_t(i)] = documentBranch(entries.at(i), filePaths.at(i), document.data);
    };
    const QIcon fileIcon = styleIcon(QStyle::SP_FileIcon);
    DetachedTree tree;
    m_documents.read(
        filePaths,
        [&](qsizetype i, const ZyHelp::DocumentCache::Document &document) {
            const QString &filePath = filePaths.at(i);
            ZyHelp::HelpParser::logStatus(filePath, document.status);
            if (document.status.outcome == ZyHelp::ParseStatus::Faulty)
                m_partlyRead.insert(filePath);
            m_helpFiles.insert(m_helpFiles.cend(), filePath, document.data);
            QTreeWidgetItem *fileItem = branches[size_t(i)];
            if (!fileItem) // kept from an earlier read
                fileItem = documentBranch(entries.at(i), filePath, document.data);
            fileItem->setIcon(0, fileIcon);
            tree.add(entries.at(i), fileItem);
            m_documentItems.append(fileItem);
        },
        prepare);
    ui->projectTree->addTopLevelItems(tree.takeTopLevel());
    ui->projectTree->expandAll();
    m_collapsedNodes.clear();
}

// For the documents shown: takes over what is on disk, dropping the edits made here
// since the last rebuild, and makes anew the nodes of documents whose languages
// changed. Every change of the languages here detaches them from the read they came
// from, and a new read brings new ones, so languages still shared are unchanged.
// Returns false when a file came or went after the list was made; the full rebuild
// then replaces all that was changed here.
bool MainWindow::updateDocuments(const QStringList &filePaths)
{
    // Documents, file nodes and list are in the same order, unless the list is not
    // sorted; then every rebuild is a full one.
    if (m_helpFiles.size() != m_documentItems.size())
        return false;
    ui->projectTree->selectionModel()->clear();
    QList<std::pair<QString, ZyHelp::ParseStatus>> faults;
    auto copy = m_helpFiles.begin();
    auto item = m_documentItems.cbegin();
    bool same = true;
    m_documents.read(filePaths, [&](qsizetype i, const ZyHelp::DocumentCache::Document &document) {
        const QString &filePath = filePaths.at(i);
        same = same && copy != m_helpFiles.end() && copy.key() == filePath;
        if (!same)
            return;
        if (document.status.outcome != ZyHelp::ParseStatus::Complete)
            faults.append({filePath, document.status});
        if (!copy->languages.isSharedWith(document.data.languages)) {
            qDeleteAll((*item)->takeChildren());
            const QList<QTreeWidgetItem *> languages = languageNodes(filePath, document.data);
            (*item)->addChildren(languages);
            for (QTreeWidgetItem *language : languages)
                language->setExpanded(true);
        }
        *copy = document.data;
        ++copy;
        ++item;
    });
    if (!same || copy != m_helpFiles.end())
        return false;

    m_partlyRead.clear();
    for (const auto &[filePath, status] : std::as_const(faults)) {
        ZyHelp::HelpParser::logStatus(filePath, status);
        if (status.outcome == ZyHelp::ParseStatus::Faulty)
            m_partlyRead.insert(filePath);
    }
    for (const QPersistentModelIndex &node : std::as_const(m_collapsedNodes))
        ui->projectTree->expand(node); // nothing for a node made anew
    m_collapsedNodes.clear();
    return true;
}

// ---- Editing pages and saving ---------------------------------------------------

void MainWindow::on_projectTree_itemClicked(QTreeWidgetItem *item, int column)
{
    Q_UNUSED(column)
    if (m_currentItem && m_currentItem != item)
        syncUiToData();
    m_currentItem = item;

    const int type = item->data(0, ItemTypeRole).toInt();
    const QString filePath = item->data(0, FilePathRole).toString();
    const auto doc = m_helpFiles.constFind(filePath);

    switch (type) {
    case TypeFile:
        ui->editorStack->setCurrentWidget(ui->pageFile);
        if (doc != m_helpFiles.cend()) {
            ui->editAuthor->setText(doc->author);
            ui->editVersion->setText(doc->version);
            ui->listLinks->clear();
            ui->listLinks->addItems(doc->links);
        }
        break;
    case TypeLanguage: {
        ui->editorStack->setCurrentWidget(ui->pageLanguage);
        if (doc == m_helpFiles.cend())
            break;
        const auto lang = doc->languages.constFind(item->data(0, LangKeyRole).toString());
        if (lang != doc->languages.cend())
            ui->editLangDescription->setText(lang->description);
        break;
    }
    case TypeSection: {
        ui->editorStack->setCurrentWidget(ui->pageSection);
        if (doc == m_helpFiles.cend())
            break;
        const auto lang = doc->languages.constFind(item->data(0, LangKeyRole).toString());
        const int index = item->data(0, SectionIndexRole).toInt();
        if (lang != doc->languages.cend() && index >= 0 && index < lang->sections.size()) {
            const ZyHelp::HelpSection &section = lang->sections.at(index);
            ui->editSectionName->setText(section.name);
            ui->editContent->setPlainText(section.content);
        }
        break;
    }
    default:
        ui->editorStack->setCurrentWidget(ui->pageEmpty);
        break;
    }
}

void MainWindow::syncUiToData()
{
    if (!m_currentItem)
        return;

    const int type = m_currentItem->data(0, ItemTypeRole).toInt();
    const QString filePath = m_currentItem->data(0, FilePathRole).toString();
    const auto doc = m_helpFiles.find(filePath);
    if (doc == m_helpFiles.end())
        return;

    QWidget *page = ui->editorStack->currentWidget();
    switch (type) {
    case TypeFile:
        if (page != ui->pageFile)
            return;
        doc->author = ui->editAuthor->text();
        doc->version = ui->editVersion->text();
        doc->links.clear();
        for (int row = 0; row < ui->listLinks->count(); ++row)
            doc->links.append(ui->listLinks->item(row)->text());
        break;
    case TypeLanguage: {
        if (page != ui->pageLanguage)
            return;
        const auto lang = doc->languages.find(m_currentItem->data(0, LangKeyRole).toString());
        if (lang != doc->languages.end())
            lang->description = ui->editLangDescription->text();
        break;
    }
    case TypeSection: {
        if (page != ui->pageSection)
            return;
        const auto lang = doc->languages.find(m_currentItem->data(0, LangKeyRole).toString());
        const int index = m_currentItem->data(0, SectionIndexRole).toInt();
        if (lang == doc->languages.end() || index < 0 || index >= lang->sections.size())
            return;
        ZyHelp::HelpSection &section = lang->sections[index];
        section.name = ui->editSectionName->text();
        section.content = ui->editContent->toPlainText();
        m_currentItem->setText(0, section.name);
        break;
    }
    default:
        break;
    }
}

void MainWindow::on_actionSave_triggered()
{
    if (!m_currentItem)
        return;
    syncUiToData();
    saveFile(m_currentItem->data(0, FilePathRole).toString());
}

void MainWindow::saveFile(const QString &filePath)
{
    // A document read only up to a fault lacks what followed it: before its
    // first save, which would drop that for good, the file is kept beside it.
    const bool keep = m_partlyRead.contains(filePath) && !m_keptOriginals.contains(filePath);
    const QString kept = keep ? keepOriginal(filePath) : QString();
    if (!kept.isEmpty())
        m_keptOriginals.insert(filePath);
    if ((keep && kept.isEmpty()) || !m_writer.writeXml(m_helpFiles.value(filePath), filePath)) {
        QMessageBox::critical(this, tr("Fehler"), tr("Speichern fehlgeschlagen."));
        return;
    }
    QString message = tr("Gespeichert: ") + QFileInfo(filePath).fileName();
    if (!kept.isEmpty()) {
        message += tr(" (unvollständig gelesen, Original aufbewahrt als %1)")
                       .arg(QFileInfo(kept).fileName());
    }
    statusBar()->showMessage(message, kept.isEmpty() ? 2000 : 10000);
}

// Copies the document's file to NAME.bak, or to NAME.bak.1, .2, ... where an
// older copy exists: none is ever overwritten. The name used, or empty on failure.
QString MainWindow::keepOriginal(const QString &filePath)
{
    QString name = filePath + QStringLiteral(".bak");
    for (int n = 1; QFileInfo::exists(name); ++n)
        name = filePath + QStringLiteral(".bak.") + QString::number(n);
    return QFile::copy(filePath, name) ? name : QString();
}

void MainWindow::on_btnAddLink_clicked()
{
    if (!m_currentItem || m_currentItem->data(0, ItemTypeRole).toInt() != TypeFile)
        return;
    const QString link = ui->editNewLink->text().trimmed();
    if (link.isEmpty())
        return;
    ui->listLinks->addItem(link);
    ui->editNewLink->clear();
}

void MainWindow::on_btnRemoveLink_clicked()
{
    qDeleteAll(ui->listLinks->selectedItems());
}

// ---- Context menu and structural edits -----------------------------------------

void MainWindow::on_projectTree_customContextMenuRequested(const QPoint &pos)
{
    QTreeWidgetItem *item = ui->projectTree->itemAt(pos);
    if (!item)
        return;

    const int type = item->data(0, ItemTypeRole).toInt();
    const QString filePath = item->data(0, FilePathRole).toString();

    QMenu menu(this);
    switch (type) {
    case TypeFile:
        connect(menu.addAction(tr("Sprache hinzufügen...")), &QAction::triggered, this,
                [this, filePath] { addLanguage(filePath); });
        menu.addSeparator();
        connect(menu.addAction(tr("Aus Projekt entfernen (Löschen)")), &QAction::triggered, this,
                [this, item] { deleteItem(item); });
        break;
    case TypeLanguage: {
        const QString langKey = item->data(0, LangKeyRole).toString();
        connect(menu.addAction(tr("Sektion hinzufügen...")), &QAction::triggered, this,
                [this, filePath, langKey] { addSection(filePath, langKey); });
        menu.addSeparator();
        connect(menu.addAction(tr("Sprache löschen")), &QAction::triggered, this,
                [this, item] { deleteItem(item); });
        break;
    }
    case TypeSection:
        connect(menu.addAction(tr("Sektion löschen")), &QAction::triggered, this,
                [this, item] { deleteItem(item); });
        break;
    default:
        break;
    }
    // A folder has no entries. Qt 6.4 opens an empty menu as an invisible popup
    // that holds the input until it is closed, Qt 6.11 opens none: so none on
    // every version.
    if (menu.isEmpty())
        return;
    menu.exec(ui->projectTree->mapToGlobal(pos));
}

void MainWindow::addLanguage(QString filePath)
{
    bool ok = false;
    const QString key = QInputDialog::getText(this, tr("Neu"), tr("Sprache (de, en):"),
                                              QLineEdit::Normal, QString(), &ok);
    if (!ok || key.isEmpty())
        return;

    ZyHelp::HelpData &doc = m_helpFiles[filePath];
    // Never replace a language the document already has: its text would be lost.
    if (doc.languages.contains(key)) {
        QMessageBox::warning(this, tr("Neu"),
                             tr("Die Sprache '%1' ist bereits vorhanden.").arg(key));
        return;
    }
    ZyHelp::HelpLanguage language;
    language.description = QStringLiteral("...");
    doc.languages.insert(key, language);
    saveFile(filePath);
    loadProjectView();
}

void MainWindow::addSection(QString filePath, QString langKey)
{
    bool ok = false;
    const QString name = QInputDialog::getText(this, tr("Neu"), tr("Sektion Name:"),
                                               QLineEdit::Normal, QString(), &ok);
    if (!ok || name.isEmpty())
        return;

    ZyHelp::HelpSection section;
    section.name = name;
    section.content = QStringLiteral("...");
    m_helpFiles[filePath].languages[langKey].sections.append(section);
    saveFile(filePath);
    loadProjectView();
}

void MainWindow::deleteItem(QTreeWidgetItem *item)
{
    const int type = item->data(0, ItemTypeRole).toInt();
    const QString filePath = item->data(0, FilePathRole).toString();

    switch (type) {
    case TypeFile:
        if (QMessageBox::question(
                this, tr("Löschen"),
                tr("Datei wirklich löschen?\n(Sie wird von der Festplatte entfernt!)"))
            != QMessageBox::Yes) {
            return;
        }
        m_projectManager.removeFileFromProject(filePath, true);
        m_helpFiles.remove(filePath);
        loadProjectView();
        m_currentItem = nullptr;
        ui->editorStack->setCurrentWidget(ui->pageEmpty);
        break;
    case TypeLanguage: {
        const QString langKey = item->data(0, LangKeyRole).toString();
        const QString question = tr("Sprache '") + langKey + tr("' löschen?");
        if (QMessageBox::question(this, tr("Löschen"), question) != QMessageBox::Yes)
            return;
        m_helpFiles[filePath].languages.remove(langKey);
        saveFile(filePath);
        loadProjectView();
        break;
    }
    case TypeSection: {
        const QString langKey = item->data(0, LangKeyRole).toString();
        const int index = item->data(0, SectionIndexRole).toInt();
        const QString question = tr("Sektion löschen?");
        if (QMessageBox::question(this, tr("Löschen"), question) != QMessageBox::Yes)
            return;
        QList<ZyHelp::HelpSection> &sections = m_helpFiles[filePath].languages[langKey].sections;
        if (index >= 0 && index < sections.size())
            sections.removeAt(index);
        saveFile(filePath);
        loadProjectView();
        break;
    }
    default:
        break;
    }
}

// ---- Project and file commands -------------------------------------------------

void MainWindow::on_actionNewProject_triggered()
{
    const QString directory = QFileDialog::getExistingDirectory(
        this, tr("Projektordner wählen"), QString(), QFileDialog::ShowDirsOnly);
    if (directory.isEmpty())
        return;

    bool ok = false;
    const QString name =
        QInputDialog::getText(this, tr("Neues Projekt"), tr("Projektname:"), QLineEdit::Normal,
                              QStringLiteral("MeinProjekt"), &ok);
    if (!ok || name.isEmpty())
        return;

    if (m_projectManager.createProject(directory, name)) {
        loadProjectView();
        QMessageBox::information(this, tr("Info"), tr("Projekt erstellt!"));
    }
}

void MainWindow::on_actionOpenProject_triggered()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Projekt öffnen"), QDir::homePath(),
                                                      tr("Projekte (*.zyproject)"));
    if (path.isEmpty())
        return;
    const WaitCursor waitCursor; // finding the documents takes its time as well
    if (m_projectManager.openProject(path))
        loadProjectView();
}

bool MainWindow::openProjectFile(const QString &path)
{
    if (path.isEmpty()) // no project named: the window starts as ever
        return false;
    // The path comes from the command line or a file manager, not from a file
    // dialog that only offers project files, so it is checked first.
    const QFileInfo info(path);
    QString reason;
    if (!info.exists())
        reason = tr("Die Datei gibt es nicht.");
    else if (info.isDir())
        reason = tr("Das ist ein Ordner, keine Projektdatei (*.zyproject).");
    else if (info.suffix().compare(QLatin1String("zyproject"), Qt::CaseInsensitive) != 0)
        reason = tr("Das ist keine Projektdatei (*.zyproject).");
    else if (!m_projectManager.openProject(info.absoluteFilePath()))
        reason = tr("Die Datei kann nicht gelesen werden.");

    if (!reason.isEmpty()) {
        QMessageBox::warning(this, tr("Info"),
                             tr("Das Projekt kann nicht geöffnet werden:\n%1\n\n%2")
                                 .arg(QDir::toNativeSeparators(path), reason));
        return false;
    }
    loadProjectView();
    return true;
}

void MainWindow::on_actionNewFile_triggered()
{
    if (m_projectManager.rootPath().isEmpty()) {
        QMessageBox::warning(this, tr("Info"), tr("Bitte erst ein Projekt öffnen/erstellen."));
        return;
    }

    const QString path = QFileDialog::getSaveFileName(
        this, tr("Neue Datei"), m_projectManager.rootPath(), tr("Hilfe (*.zyhelp)"));
    if (path.isEmpty())
        return;

    ZyHelp::HelpData document;
    document.version = QStringLiteral("1.0");
    document.author = QStringLiteral("Ich");
    ZyHelp::HelpLanguage german;
    german.description = QStringLiteral("Neue Beschreibung");
    document.languages.insert(QStringLiteral("de"), german);

    if (m_writer.writeXml(document, path)) {
        m_projectManager.refreshFileList();
        m_projectManager.saveProject();
        loadProjectView();
    }
}

void MainWindow::on_actionReload_triggered()
{
    if (m_projectManager.rootPath().isEmpty())
        return;
    const WaitCursor waitCursor;
    m_projectManager.refreshFileList();
    loadProjectView();
}

void MainWindow::on_actionRegisterPath_triggered()
{
    if (m_projectManager.rootPath().isEmpty()) {
        QMessageBox::warning(this, tr("Info"), tr("Kein Projekt geöffnet."));
        return;
    }
    m_projectManager.registerPathInGlobalConfig();
    QMessageBox::information(this, tr("Info"), tr("Pfad (inkl. Unterordner) wurde registriert."));
}
