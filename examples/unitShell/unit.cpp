/// The simulated radio unit that the commands look at and change.
#include "unit.h"

#include <algorithm>

namespace UnitShell {

namespace {

template <typename Parts>
auto find(Parts& parts, const std::string& id)
{
    using Part = typename Parts::value_type;
    const auto found =
        std::find_if(parts.begin(), parts.end(), [&](const Part& part) { return std::to_string(part.id) == id; });
    return found == parts.end() ? nullptr : &*found;
}

} // namespace

const char* textOf(AlarmState state)
{
    switch (state) {
    case AlarmState::raised:
        return "raised";
    case AlarmState::acknowledged:
        return "acknowledged";
    default:
        return "cleared";
    }
}

Carrier* Unit::findCarrier(const std::string& id)
{
    return find(m_carriers, id);
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

const Alarm* Unit::findAlarm(const std::string& id) const
{
    return find(m_alarms, id);
}

void Unit::setState(const Alarm& alarm, AlarmState state)
{
    Alarm& own = m_alarms.at(alarm.id - 1); // numbered in order
    own.state = state;
    m_onAlarm(own);
}

std::string Unit::trouble() const
{
    if (m_temperature > m_high) {
        return "temperature too high";
    }
    return m_temperature < m_low ? "temperature too low" : "";
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
