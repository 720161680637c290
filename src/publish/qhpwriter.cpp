#include "qhpwriter.h"

#include "linkindex.h"
#include "sitemodel.h"

#include <QFileInfo>
#include <QXmlStreamWriter>

#include <functional>

namespace ZyHelp::Publish {

namespace {

const QLatin1StringView virtualFolder("doc");

bool isNamespaceChar(QChar c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'.' || c == u'-';
}

QString fileOf(const SiteModel &model, int document)
{
    return model.pagePath(document) + QLatin1StringView(".html");
}

} // namespace

QhpWriter::QhpWriter(const SiteModel &model, const QString &projectName, const QString &language)
    : m_model(model)
    , m_projectName(projectName)
    , m_language(language)
{
}

// A namespace is a URL's host part for the help engine: lower-case letters,
// digits, dots and dashes.
QString QhpWriter::helpNamespace() const
{
    QString name;
    for (const QChar c : (m_projectName + u'.' + m_language).toLower())
        name += isNamespaceChar(c) ? c : u'-';
    return QLatin1StringView("zyhelp.") + name;
}

QByteArray QhpWriter::project(const QStringList &extraFiles) const
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("QtHelpProject"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    xml.writeTextElement(QStringLiteral("namespace"), helpNamespace());
    xml.writeTextElement(QStringLiteral("virtualFolder"), virtualFolder);
    xml.writeStartElement(QStringLiteral("filterSection"));

    xml.writeStartElement(QStringLiteral("toc"));
    xml.writeStartElement(QStringLiteral("section"));
    xml.writeAttribute(QStringLiteral("title"), m_projectName);
    xml.writeAttribute(QStringLiteral("ref"), QStringLiteral("index.html"));
    const std::function<void(int)> addFolder = [&](int folder) {
        for (int child : m_model.folder(folder).folders) {
            xml.writeStartElement(QStringLiteral("section"));
            xml.writeAttribute(QStringLiteral("title"), m_model.folder(child).name);
            xml.writeAttribute(QStringLiteral("ref"), QStringLiteral("index.html#f%1").arg(child));
            addFolder(child);
            xml.writeEndElement();
        }
        for (int page : m_model.folder(folder).pages) {
            xml.writeEmptyElement(QStringLiteral("section"));
            xml.writeAttribute(QStringLiteral("title"), m_model.title(page));
            xml.writeAttribute(QStringLiteral("ref"), fileOf(m_model, page));
        }
    };
    if (m_model.pageCount() > 0)
        addFolder(0);
    xml.writeEndElement(); // section
    xml.writeEndElement(); // toc

    xml.writeStartElement(QStringLiteral("keywords"));
    for (int page : m_model.order()) {
        xml.writeEmptyElement(QStringLiteral("keyword"));
        xml.writeAttribute(QStringLiteral("name"), m_model.title(page));
        xml.writeAttribute(QStringLiteral("id"), m_model.pagePath(page));
        xml.writeAttribute(QStringLiteral("ref"), fileOf(m_model, page));
    }
    xml.writeEndElement();

    xml.writeStartElement(QStringLiteral("files"));
    QStringList files = extraFiles;
    for (int page : m_model.order())
        files.append(fileOf(m_model, page));
    for (const QString &file : std::as_const(files))
        xml.writeTextElement(QStringLiteral("file"), file);
    xml.writeEndElement();

    xml.writeEndElement(); // filterSection
    xml.writeEndElement(); // QtHelpProject
    xml.writeEndDocument();
    return bytes;
}

QStringList QhpWriter::faults(const QString &folder) const
{
    QStringList faults;
    const QString name = helpNamespace();
    if (name.contains(QLatin1StringView("..")) || name.endsWith(u'.'))
        faults.append(QStringLiteral("the namespace '%1' is no valid name").arg(name));
    for (int page : m_model.order()) {
        if (!QFileInfo(folder + u'/' + fileOf(m_model, page)).isFile())
            faults.append(QStringLiteral("the page '%1' is missing").arg(fileOf(m_model, page)));
    }
    if (!QFileInfo(folder + QLatin1StringView("/index.html")).isFile())
        faults.append(QStringLiteral("the contents page 'index.html' is missing"));
    return faults;
}

} // namespace ZyHelp::Publish
