#include "mainwindow.h"
#include "ui_mainwindow.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QStyle>

#include <array>

namespace {

// A document, language or section node. What it stands for is read through the
// data roles of column 0 like on any node, but kept in members: QTreeWidgetItem
// copies its whole list of roles on every setData, which made filling the tree
// of a large project take half as long again as reading its documents.
class ProjectItem : public QTreeWidgetItem
{
public:
    ProjectItem(int kind, const QString &text, const QString &filePath)
    {
        setText(0, text);
        m_roles[0] = kind;
        m_roles[1] = filePath;
    }
    ProjectItem(int kind, const QString &text, const QString &filePath, const QString &langKey)
        : ProjectItem(kind, text, filePath)
    {
        m_roles[2] = langKey;
    }
    ProjectItem(const QString &text, const QString &filePath, const QString &langKey,
                int sectionIndex)
        : ProjectItem(MainWindow::TypeSection, text, filePath, langKey)
    {
        m_roles[3] = sectionIndex;
    }

    QVariant data(int column, int role) const override
    {
        if (isOwnRole(column, role))
            return m_roles[role - MainWindow::ItemTypeRole];
        return QTreeWidgetItem::data(column, role);
    }

    void setData(int column, int role, const QVariant &value) override
    {
        if (!isOwnRole(column, role)) {
            QTreeWidgetItem::setData(column, role, value);
            return;
        }
        m_roles[role - MainWindow::ItemTypeRole] = value;
        emitDataChanged();
    }

    QTreeWidgetItem *clone() const override { return new ProjectItem(*this); }

private:
    ProjectItem(const ProjectItem &other) = default;

    static bool isOwnRole(int column, int role)
    {
        return column == 0 && role >= MainWindow::ItemTypeRole && role <= MainWindow::SectionIndexRole;
    }

    std::array<QVariant, 4> m_roles; // ItemTypeRole to SectionIndexRole
};

// The style's folder icon. Asking the style for it costs more than all the rest
// of finding or making a folder node, so each style is asked once; the icon is
// kept on the style and goes with it.
QIcon folderIcon()
{
    QStyle *style = QApplication::style();
    static const char key[] = "_zyhelp_folderIcon";
    QVariant icon = style->property(key);
    if (!icon.isValid()) {
        icon = QVariant::fromValue(style->standardIcon(QStyle::SP_DirIcon));
        style->setProperty(key, icon);
    }
    return icon.value<QIcon>();
}

} // namespace

QTreeWidgetItem *getFolderItem(QTreeWidget *tree, QTreeWidgetItem *parent, const QString &name)
{
    const int count = parent ? parent->childCount() : tree->topLevelItemCount();
    for (int i = 0; i < count; ++i) {
        QTreeWidgetItem *child = parent ? parent->child(i) : tree->topLevelItem(i);
        if (child->text(0) == name
            && child->data(0, MainWindow::ItemTypeRole).toInt() == MainWindow::TypeFolder) {
            return child;
        }
    }

    auto *folder = new QTreeWidgetItem;
    folder->setText(0, name);
    folder->setIcon(0, folderIcon());
    folder->setData(0, MainWindow::ItemTypeRole, MainWindow::TypeFolder);
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
    ui->projectTree->clear();
    m_helpFiles.clear();
    m_partlyRead.clear();
    m_currentItem = nullptr;
    setWindowTitle(tr("Editor - ") + m_projectManager.projectName());

    const QDir root(m_projectManager.rootPath());
    const QIcon fileIcon = style()->standardIcon(QStyle::SP_FileIcon);
    const QStringList files = m_projectManager.files();
    for (const QString &entry : files) {
        const QString filePath = root.filePath(entry);
        if (!QFile::exists(filePath))
            continue;

        ZyHelp::ParseStatus status;
        const ZyHelp::HelpData document = m_parser.parse(filePath, &status);
        ZyHelp::HelpParser::logStatus(filePath, status);
        if (status.outcome == ZyHelp::ParseStatus::Faulty)
            m_partlyRead.insert(filePath);
        m_helpFiles.insert(filePath, document);

        QStringList folders = entry.split(QLatin1Char('/'));
        const QString fileName = folders.takeLast();
        QTreeWidgetItem *parent = nullptr;
        for (const QString &folder : std::as_const(folders))
            parent = getFolderItem(ui->projectTree, parent, folder);

        // The document's nodes are filled before the file node joins the tree, so
        // the view is told about each document once, not about every node.
        auto *fileItem = new ProjectItem(TypeFile, fileName, filePath);
        fileItem->setIcon(0, fileIcon);
        for (auto lang = document.languages.cbegin(); lang != document.languages.cend(); ++lang) {
            auto *langItem = new ProjectItem(TypeLanguage, lang.key(), filePath, lang.key());
            fileItem->addChild(langItem);
            for (qsizetype i = 0; i < lang->sections.size(); ++i) {
                langItem->addChild(
                    new ProjectItem(lang->sections.at(i).name, filePath, lang.key(), int(i)));
            }
        }

        if (parent)
            parent->addChild(fileItem);
        else
            ui->projectTree->addTopLevelItem(fileItem);
    }

    ui->projectTree->expandAll();
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
    QString kept;
    if (m_partlyRead.contains(filePath) && !m_keptOriginals.contains(filePath)) {
        kept = keepOriginal(filePath);
        if (kept.isEmpty()) {
            QMessageBox::critical(this, tr("Fehler"), tr("Speichern fehlgeschlagen."));
            return;
        }
        m_keptOriginals.insert(filePath);
    }

    if (!m_writer.writeXml(m_helpFiles.value(filePath), filePath)) {
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
        if (QMessageBox::question(this, tr("Löschen"),
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
        if (QMessageBox::question(this, tr("Löschen"), tr("Sprache '") + langKey + tr("' löschen?"))
            != QMessageBox::Yes) {
            return;
        }
        m_helpFiles[filePath].languages.remove(langKey);
        saveFile(filePath);
        loadProjectView();
        break;
    }
    case TypeSection: {
        const QString langKey = item->data(0, LangKeyRole).toString();
        const int index = item->data(0, SectionIndexRole).toInt();
        if (QMessageBox::question(this, tr("Löschen"), tr("Sektion löschen?")) != QMessageBox::Yes)
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
    const QString name = QInputDialog::getText(this, tr("Neues Projekt"), tr("Projektname:"),
                                               QLineEdit::Normal, QStringLiteral("MeinProjekt"), &ok);
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
    if (m_projectManager.openProject(path))
        loadProjectView();
}

bool MainWindow::openProjectFile(const QString &path)
{
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

    const QString path = QFileDialog::getSaveFileName(this, tr("Neue Datei"),
                                                      m_projectManager.rootPath(),
                                                      tr("Hilfe (*.zyhelp)"));
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
