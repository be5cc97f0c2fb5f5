"""The goals of the benchmarks, and the figures of a run that they are about."""
import configparser
import dataclasses
import fractions
import json
import re
import statistics

# A difference below this is no difference, however well two runs agree within themselves.
LEAST_DIFFERENCE = 0.05


@dataclasses.dataclass
class Value:
    """A median with its quartiles."""
    middle: float
    low: float
    high: float

    def combine(self, operator, other):
        if operator == "-":
            return Value(self.middle - other.middle, self.low - other.high, self.high - other.low)
        return Value(self.middle / other.middle, self.low / other.high, self.high / other.low)

    def differs(self, other):
        apart = self.high < other.low or other.high < self.low
        return apart and abs(self.middle - other.middle) > LEAST_DIFFERENCE * max(abs(self.middle), abs(other.middle))


@dataclasses.dataclass
class Comparison:
    """A figure of a row, alone or beside another one, with its goal if it has one. A figure is "case/who" for the time
    or "case/who.counter", and both sides have the same."""
    row: str
    left: str
    operator: str = ""
    right: str = ""
    relation: str = ""
    limit: str = ""
    value: Value = None
    is_listed: bool = False

    @property
    def name(self):
        (case, left), (other_case, right) = self.left.split("/"), (self.right or "/").split("/")
        (who, _, counter), other = left.partition("."), right.partition(".")[0]
        if not self.right:
            parts = [case, counter if who == "ours" else left]
        elif case == other_case:
            parts = [case, f"{who} {self.operator} {other}", counter]
        else:
            parts = [f"{case} {self.operator} {other_case}", "" if who == other == "ours" else f"{who} {self.operator} {other}",
                     counter]
        return ": ".join(parts[:1] + [", ".join(part for part in parts[1:] if part)]).removesuffix(": ")

    @property
    def is_met(self):
        limit = float(fractions.Fraction(self.limit))
        return self.value.middle <= limit if self.relation == "<=" else self.value.middle >= limit


def read_results(path):
    with open(path) as file:
        return json.load(file)


def value_of(figures, row, figure):
    """Returns the value of "case/who.counter"; None if it wasn't measured."""
    case, who = figure.split("/")
    who, _, counter = who.partition(".")
    samples = figures.get(f"{row}/{case}/{who}", {}).get(counter or "time")
    if not samples:
        return None
    low, middle, high = statistics.quantiles(samples, n=4) if len(samples) > 1 else samples * 3
    return Value(middle, low, high)


def read_goals(path):
    goals = configparser.ConfigParser(delimiters="=", interpolation=None)
    with open(path) as file:
        goals.read_file(file)
    return goals


def goals_of(section, row):
    """Returns the goals of a row, each line "FIGURE [(/|-) FIGURE] [(<=|>=) NUMBER]"."""
    goals = []
    for line in section["goals"].strip().splitlines():
        match = re.fullmatch(r"(\S+/\S+)(?: ([/-]) (\S+/\S+))?(?: (<=|>=) (\S+))?", line.strip())
        if not match:
            raise ValueError(f"the goal of {row} is not understood: {line}")
        goals.append(Comparison(row, match[1], match[2] or "", match[3] or "", match[4] or "", match[5] or "",
                                is_listed=True))
    return goals


def measure(figures, comparison):
    """Returns the comparison with its value. A case '*' is the case whose value is the worst."""
    cases = [comparison.left.split("/")[0]]
    if cases == ["*"]:
        cases = [name.split("/")[1] for name in figures if name.startswith(comparison.row + "/")]
    measured = []
    for case in dict.fromkeys(cases):
        left, right = comparison.left.replace("*", case), comparison.right.replace("*", case)
        value = value_of(figures, comparison.row, left)
        if value and right:
            other = value_of(figures, comparison.row, right)
            value = other and value.combine(comparison.operator, other)
        if value:
            measured.append(dataclasses.replace(comparison, left=left, right=right, value=value))
    worst = max if comparison.relation == "<=" else min
    return worst(measured, key=lambda one: one.value.middle, default=comparison)


def comparisons(figures, section, row):
    """Returns the goals of a row, and our figure beside that of all others in the same case: the figure of the case's
    first goal, else the time."""
    found = [measure(figures, goal) for goal in goals_of(section, row)]
    counters = {}
    for one in goals_of(section, row):
        case, who = one.left.split("/")
        counters.setdefault(case, "".join(who.partition(".")[1:]))
    for name in figures:
        of_row, case, who = name.split("/")
        if of_row == row and who != "ours":
            counter = counters.get(case, counters.get("*", ""))
            pair = Comparison(row, f"{case}/ours{counter}", "/", f"{case}/{who}{counter}")
            if not any((one.left, one.operator, one.right) == (pair.left, "/", pair.right) for one in found):
                pair = measure(figures, pair)
                found += [pair] if pair.value else []
    return found
