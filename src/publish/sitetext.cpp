#include "sitetext.h"

namespace ZyHelp::Publish {

const SiteText &SiteText::forLanguage(const QString &language)
{
    static const SiteText german{
        QStringLiteral("Zum Inhalt springen"),
        QStringLiteral("Inhalt"),
        QStringLiteral("Pfad"),
        QStringLiteral("Sprachen"),
        QStringLiteral("Suchen"),
        QStringLiteral("Suchbegriff"),
        QStringLiteral("Treffer"),
        QStringLiteral("Keine Treffer."),
        QStringLiteral("Die Suche braucht JavaScript."),
        QStringLiteral("Siehe auch"),
        QStringLiteral("Link zu diesem Abschnitt"),
        QStringLiteral("Zurück"),
        QStringLiteral("Weiter"),
        QStringLiteral("Blättern"),
        QStringLiteral("Diese Seite ist noch nicht übersetzt; sie zeigt den Text in "
                       "der Sprache „%1“.")};
    static const SiteText english{
        QStringLiteral("Skip to content"),
        QStringLiteral("Contents"),
        QStringLiteral("Breadcrumbs"),
        QStringLiteral("Languages"),
        QStringLiteral("Search"),
        QStringLiteral("Search term"),
        QStringLiteral("Results"),
        QStringLiteral("No results."),
        QStringLiteral("The search needs JavaScript."),
        QStringLiteral("See also"),
        QStringLiteral("Link to this section"),
        QStringLiteral("Previous"),
        QStringLiteral("Next"),
        QStringLiteral("Pages"),
        QStringLiteral("This page is not translated yet; it shows the text in the "
                       "language \u201c%1\u201d.")};
    return language == u"de" ? german : english;
}

} // namespace ZyHelp::Publish
