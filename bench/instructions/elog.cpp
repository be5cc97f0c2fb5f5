/// The counted operations of the event log. No engine is there, so entries wait and the client's thread sleeps.
#include <string>
#include <vector>

#include <elog/elogIf.h>

#include "bench/instructions/operations.h"

using Corvane::Elog::V2::ElogIf;

void Corvane::Bench::countElog()
{
    ElogIf& elog = ElogIf::getInstance();
    const std::string shortText = "carrier down";
    const std::string longText(200, 'x');
    const std::vector<unsigned int> params = {1, 2, 3, 4};
    count("getInstance", [&] { ElogIf::getInstance(); });
    count("elogWrite-short-0", [&] { elog.elogWrite(1, shortText, {}); });
    count("elogWrite-short-4", [&] { elog.elogWrite(1, shortText, params); });
    count("elogWrite-long-0", [&] { elog.elogWrite(1, longText, {}); });
    count("elogWrite-long-4", [&] { elog.elogWrite(1, longText, params); });
}
