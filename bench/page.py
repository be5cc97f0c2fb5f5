"""Writes docs/benchmarks.md and its charts from the results of a run."""
import html
import math
import os
import shutil
import statistics
import textwrap

from results import comparisons, value_of

GROUPS = {"C": "Command tables", "F": "In-memory files", "E": "Event log", "T": "Tracing", "H": "Headers and loading",
          "L": "Headers and loading"}
LABELS, PLOT, NOTES = 390, 400, 200  # the widths of a chart's columns
TOP, BAR = 66, 22  # the heights of its head and of a bar
STYLE = """
  text { font: 12px sans-serif; fill: #1a1a1a } .row { font-weight: bold } .end { text-anchor: end }
  .middle { text-anchor: middle } .paper { fill: #ffffff } .grid { stroke: #c8c8c8 } .one { stroke: #1a1a1a }
  .bar { fill: #9db8d9; stroke: #1a1a1a } .missed { fill: url(#hatch); stroke: #1a1a1a } .goal { stroke: #1a1a1a; stroke-width: 4 }
  .dash { stroke: #1a1a1a; stroke-width: 2 } .ground { fill: #ffffff }
  @media (prefers-color-scheme: dark) {
    text { fill: #e8e8e8 } .paper, .ground { fill: #16191d } .grid { stroke: #4a4f55 } .bar { fill: #40658f }
    .one, .bar, .missed, .goal, .dash { stroke: #e8e8e8 }
  }
"""


def number(value):
    if value == 0 or not math.isfinite(value):
        return f"{value:g}"
    digits = max(0, 2 - math.floor(math.log10(abs(value))))
    return f"{value:,.{digits}f}" if digits < 5 else f"{value:.3g}"


def counted(value):
    return f"{value:,.0f}" if value == int(value) else number(value)


def time(nanoseconds):
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if abs(nanoseconds) >= scale:
            return f"{number(nanoseconds / scale)} {unit}"
    return f"{number(nanoseconds)} ns"


def amount(comparison, value):
    is_time = "." not in comparison.left.rsplit("/", 1)[1] or comparison.left.endswith((".p50", ".p99"))
    if comparison.operator == "/":
        return number(value)
    return time(value) if is_time else counted(value)


def verdict(comparison):
    if comparison.value is None:
        return "not measured"
    if not comparison.limit:
        return ""
    return "met" if comparison.is_met else "**missed**"


def goal_text(comparison):
    sign = {"<=": "≤", ">=": "≥"}[comparison.relation]
    is_ratio = comparison.operator == "/"
    return f"{sign} {comparison.limit if is_ratio else amount(comparison, float(comparison.limit))}"


def place(comparison, value):
    """Where a ratio stands, in powers of two. A ratio that should be large is turned over, so that left is better."""
    return math.log2(value) * (-1 if comparison.relation == ">=" else 1)


def chart(title, bars):
    """Returns the chart of a row as SVG: a bar for each ratio, from 1 to the left if ours is faster."""
    places = [place(one, one.value.middle) for one in bars]
    places += [place(one, goal_of(one)) for one in bars if one.limit]
    low, high = min(-1, math.floor(min(places))), max(1, math.ceil(max(places)))
    x = lambda position: LABELS + (position - low) / (high - low) * PLOT
    height = TOP + len(bars) * BAR + 10
    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {LABELS + PLOT + NOTES} {height}">',
           f"<style>{STYLE}</style>",
           '<defs><pattern id="hatch" width="6" height="6" patternUnits="userSpaceOnUse" patternTransform="rotate(45)">'
           '<rect class="ground" width="6" height="6"/><path class="dash" d="M0 0V6"/></pattern></defs>',
           '<rect class="paper" width="100%" height="100%"/>',
           f'<text class="row" x="8" y="18">{html.escape(title.replace("`", ""))}</text>',
           f'<text class="end" x="{x(0) - 8:.0f}" y="38">← ours takes less</text>',
           f'<text x="{x(0) + 8:.0f}" y="38">ours takes more →</text>']
    step = max(1, math.ceil((high - low) / 10))
    for power in range(low, high + 1):
        if power % step == 0:
            label = f"1/{2 ** -power}" if power < 0 else str(2 ** power)
            svg.append(f'<path class="{"grid" if power else "one"}" d="M{x(power):.0f} {TOP - 4}V{height - 8}"/>'
                       f'<text class="middle" x="{x(power):.0f}" y="{TOP - 8}">{label}</text>')
    for line, one in enumerate(bars):
        svg += bar(one, x, TOP + line * BAR)
    return "\n".join(svg + ["</svg>", ""])


def goal_of(comparison):
    left, _, right = comparison.limit.partition("/")
    return float(left) / float(right or 1)


def bar(one, x, y):
    start, end = sorted((x(0), x(place(one, one.value.middle))))
    is_missed = bool(one.limit) and not one.is_met
    note = f"{number(one.value.middle)}"
    if one.limit:
        note += f" (goal {goal_text(one)}{', missed' if is_missed else ''})"
    svg = [f'<text class="end" x="{LABELS - 10}" y="{y + 15}">{html.escape(one.name)}</text>',
           f'<rect class="{"missed" if is_missed else "bar"}" x="{start:.1f}" y="{y + 4}" '
           f'width="{max(1, end - start):.1f}" height="{BAR - 8}"/>',
           f'<text x="{LABELS + PLOT + 10}" y="{y + 15}">{html.escape(note)}</text>']
    if one.limit:
        svg.append(f'<path class="goal" d="M{x(place(one, goal_of(one))):.1f} {y + 1}v{BAR - 2}"/>')
    return svg


def table(of_row):
    lines = ["| what | measured | quartiles | goal | |", "|---|---:|---|---|---|"]
    for one in of_row:
        if one.is_listed:
            value = one.value
            measured = ["", ""]
            if value:
                measured = [amount(one, value.middle), f"{amount(one, value.low)} to {amount(one, value.high)}"]
            goal = goal_text(one) if one.limit else ""
            lines.append(f"| {one.name} | {' | '.join(measured)} | {goal} | {verdict(one)} |")
    return lines


def all_figures(figures):
    lines = ["## All figures", "", "Medians of the repetitions.", "", "| benchmark | time | others |", "|---|---:|---|"]
    for name, counters in figures.items():
        others = "; ".join(f"{counter} {counted(statistics.median(samples))}" for counter, samples in counters.items()
                           if counter != "time")
        lines.append(f"| {name} | {time(statistics.median(counters['time'])) if 'time' in counters else ''} | {others} |")
    return lines


def head(results, goals):
    met = sum(one.is_met for one in goals if one.value)
    missing = f" Left out, because they were not installed: {', '.join(results['missing'])}." if results["missing"] else ""
    paragraphs = [
        f"`tools/bench page` wrote this page from `bench/results.json`, a run of `make bench`. {met} of {len(goals)} goals are "
        "met.",
        f"Measured on {results['date']} at commit {results['commit']}: {results['machine']}; {results['compiler']}; load at "
        f"the start {results['load']}.{missing}",
        "Each service is measured beside a *floor*, which is the least code that does the same duty by hand with the same "
        "locks and copies, and beside peers, in one process and in random order. A figure is the median of "
        f"{results['repetitions']} repetitions; the quartiles show the noise. Times are CPU time of the measuring thread, "
        "unless another thread or process belongs to what is measured. In the charts a bar to the left means that ours takes "
        "less. A thick line is a goal. A hatched bar misses its goal. Where all cases of a row have one goal, the worst case "
        "is shown with it."]
    return ["# Benchmarks"] + ["\n" + textwrap.fill(text, 120, break_on_hyphens=False) for text in paragraphs]


def write(folder, results, goals):
    """Writes the page and its charts into the folder of the documents."""
    figures = results["figures"]
    rows = {row: comparisons(figures, goals[row], row) for row in goals.sections()}
    page = head(results, [one for of_row in rows.values() for one in of_row if one.limit])
    shutil.rmtree(folder + "/benchmarks", ignore_errors=True)
    os.mkdir(folder + "/benchmarks")
    group = ""
    for row, of_row in rows.items():
        if group != GROUPS[row[0]]:
            group = GROUPS[row[0]]
            page += ["", f"## {group}"]
        title = f"{row}: {goals[row]['what']}"
        page += ["", f"### {title}"]
        ratios = [one for one in of_row if one.operator == "/" and one.value and one.value.middle > 0]
        if ratios:
            with open(f"{folder}/benchmarks/{row}.svg", "w") as file:
                file.write(chart(title, ratios))
            page += ["", f"![{row}: our figures beside those of others](benchmarks/{row}.svg)"]
        page += [""] + table(of_row)
        if any("missed" in verdict(one) for one in of_row) and "reason" in goals[row]:
            page += ["", textwrap.fill("Why not: " + goals[row]["reason"], 120, break_on_hyphens=False)]
    page += [""] + all_figures(figures)
    with open(folder + "/benchmarks.md", "w") as file:
        file.write("\n".join(page) + "\n")
