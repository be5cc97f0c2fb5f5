// SPDX-License-Identifier: MIT
/// The simulated radio unit that the commands look at and change.
#include "unit.h"

#include <algorithm>

namespace UnitShell {

const char* textOf(AlarmState state)
{
    return state == AlarmState::raised ? "raised" : state == AlarmState::acknowledged ? "acknowledged" : "cleared";
}

void Unit::setTemperature(double celsius)
{
    m_temperature = celsius;
    raiseAlarms();
}

void Unit::setLimits(double low, double high)
{
    m_low = low;
    m_high = high;
    raiseAlarms();
}

void Unit::setState(const Alarm& alarm, AlarmState state)
{
    Alarm& own = m_alarms.at(alarm.id - 1); // their numbers begin with 1
    own.state = state;
    m_onAlarm(own);
}

std::string Unit::trouble() const
{
    return m_temperature > m_high ? "temperature too high" : m_temperature < m_low ? "temperature too low" : "";
}

void Unit::raiseAlarms()
{
    const std::string cause = trouble();
    const bool known = std::any_of(m_alarms.begin(), m_alarms.end(), [&](const Alarm& alarm) {
        return alarm.cause == cause && alarm.state != AlarmState::cleared;
    });
    if (!cause.empty() && !known) {
        const auto id = static_cast<unsigned int>(m_alarms.size() + 1);
        m_alarms.push_back({id, cause, AlarmState::raised, m_temperature});
        m_onAlarm(m_alarms.back());
    }
}

} // namespace UnitShell
