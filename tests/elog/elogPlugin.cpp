/// A plug-in that writes to the event log while it is being loaded.
#include <elog/elogIf.h>

#include "tests/elog/elogPluginHost.h"

namespace {

struct AtLoad
{
    AtLoad()
    {
        pluginIsLoading();
        Corvane::Elog::V2::ElogIf::getInstance().elogWrite(2, "from the plug-in", {});
    }
};

const AtLoad atLoad;

} // namespace
