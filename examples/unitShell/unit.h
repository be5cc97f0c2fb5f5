// SPDX-License-Identifier: MIT
/// The simulated radio unit that the commands look at and change: carriers, a temperature and alarms.
///
/// Threads  only the one that runs the commands: there is no lock.
#ifndef UNITSHELL_UNIT_H
#define UNITSHELL_UNIT_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace UnitShell {

/// What the unit's sensor can measure, in degrees Celsius.
constexpr double coldest = -60;
constexpr double hottest = 150;

struct Carrier
{
    unsigned int id;
    const char* band;
    bool on;
    double power; // dBm, while it is on
};

enum class AlarmState
{
    raised,
    acknowledged,
    cleared
};

struct Alarm
{
    unsigned int id;
    std::string cause;
    AlarmState state;
    double temperature; // degrees Celsius, when it was raised
};

const char* textOf(AlarmState state);

class Unit
{
public:
    /// Calls `onAlarm` with an alarm whenever its state has changed.
    explicit Unit(std::function<void(const Alarm&)> onAlarm) : m_onAlarm(std::move(onAlarm)) {}

    std::vector<Carrier>& carriers() { return m_carriers; }

    /// In degrees Celsius.
    double temperature() const { return m_temperature; }
    double low() const { return m_low; }
    double high() const { return m_high; }

    /// Both raise an alarm if the temperature is then beyond a limit and no open alarm tells that.
    void setTemperature(double celsius);
    void setLimits(double low, double high);

    /// Returns  all alarms since the start, oldest first.
    const std::vector<Alarm>& alarms() const { return m_alarms; }
    /// Sets the state of one of the unit's alarms.
    void setState(const Alarm& alarm, AlarmState state);
    /// Returns  whether the cause of the alarm still exists.
    bool persists(const Alarm& alarm) const { return trouble() == alarm.cause; }

private:
    std::string trouble() const;
    void raiseAlarms();

    std::vector<Carrier> m_carriers = {{1, "B1", true, 40}, {2, "B3", false, 37}, {3, "B7", false, 43}};
    double m_temperature = 42.5;
    double m_low = -20;
    double m_high = 85;
    std::vector<Alarm> m_alarms;
    std::function<void(const Alarm&)> m_onAlarm;
};

} // namespace UnitShell

#endif
