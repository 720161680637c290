#include "helpdata.h"

namespace ZyHelp {

HelpData::HelpData() = default;

} // namespace ZyHelp
