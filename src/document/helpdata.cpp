#include "helpdata.h"

namespace ZyHelp {

HelpData::HelpData() = default;

bool isUnwritten(const QString &text)
{
    return text.isEmpty() || text == u"..." || text == u"Neue Beschreibung";
}

} // namespace ZyHelp
