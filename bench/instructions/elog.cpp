/// The counted operations of the event log.
#include <elog/elogIf.h>

#include "bench/instructions/operations.h"

using Corvane::Elog::V2::ElogIf;

void Corvane::Bench::countElog()
{
    ElogIf& elog = ElogIf::getInstance();
    count("elogWrite", [&] { elog.elogWrite(1, "text", {1, 2, 3, 4}); });
}
