"""Draws one measurement as a timeline: what each side saw of the work, and what it did."""
import html

import analysis

WIDTH, LEFT, RIGHT = 880, 64, 20
BEFORE = 8  # Seconds before the work that are shown.
LANE_TOP, LANE_HEIGHT, LANE_PITCH, STRIP = 74, 96, 168, 14
STYLE = """
text{fill:#1f2328;font-size:13px}.s{fill:#57606a;font-size:12px}
.axis{stroke:#8c959f;fill:none}.grid{stroke:#d0d7de;fill:none}
.cpu{fill:#0969da;fill-opacity:.28;stroke:#0969da}
.work{stroke:#57606a;stroke-dasharray:3 3;fill:none}
.held{fill:#2da44e}.grace{fill:#a5d8b3}.over{fill:#d4a72c}.free{fill:none;stroke:#8c959f}
@media (prefers-color-scheme:dark){
text{fill:#e6edf3}.s{fill:#8b949e}.axis{stroke:#6e7681}.grid{stroke:#30363d}
.cpu{fill:#58a6ff;stroke:#58a6ff}.work{stroke:#8b949e}
.held{fill:#3fb950}.grace{fill:#1f5a2e}.over{fill:#d29922}.free{stroke:#6e7681}}
"""
SIDES = [("plain", "before: living processes only"), ("whole", "after: nothing is lost")]


class Scale:
    def __init__(self, measured):
        self.begin = -float(BEFORE)
        self.end = max(side_ticks(measured, side)[-1]["at"] for side, _ in SIDES) + analysis.TICK
        self.percent = 100.0 * measured["processors"]

    def x(self, seconds):
        seconds = max(seconds, self.begin)
        span = self.end - self.begin
        return LEFT + (seconds - self.begin) / span * (WIDTH - LEFT - RIGHT)

    def y(self, percent, bottom):
        return bottom - min(percent, self.percent * 1.05) / (self.percent * 1.05) * LANE_HEIGHT


def side_ticks(measured, side):
    """Those that are shown, and the one before them."""
    ticks = measured[side]["ticks"]
    before = sum(tick["at"] < -BEFORE for tick in ticks)
    return ticks[max(0, before - 1):]


def text(x, y, words, kind="", anchor="start"):
    kind = f' class="{kind}"' if kind else ""
    return f'<text{kind} x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">{html.escape(words)}</text>'


def rect(kind, x, y, width, height):
    return f'<rect class="{kind}" x="{x:.1f}" y="{y:.1f}" width="{width:.1f}" height="{height}"/>'


def line(kind, x1, y1, x2, y2):
    return f'<path class="{kind}" d="M{x1:.1f} {y1:.1f}L{x2:.1f} {y2:.1f}"/>'


def seen_percent(tick, workload):
    return sum(app["cpu"] for app in tick["seen"] if analysis.is_named(app, workload.names))


def area(measured, side, workload, scale, bottom):
    """A tick tells of the time since the one before."""
    ticks = side_ticks(measured, side)
    points = [f"M{scale.x(ticks[0]['at']):.1f} {bottom}"]
    for before, tick in zip(ticks, ticks[1:]):
        y = scale.y(seen_percent(tick, workload), bottom)
        points.append(f"L{scale.x(before['at']):.1f} {y:.1f}L{scale.x(tick['at']):.1f} {y:.1f}")
    points.append(f"L{scale.x(ticks[-1]['at']):.1f} {bottom}Z")
    return f'<path class="cpu" d="{"".join(points)}"/>'


def outcome(tick, workload):
    if analysis.working(tick, workload):
        return "held"
    return "grace" if tick["held"] else "free"


def strips(measured, side, workload, scale, top):
    """Below the area: a thin line while the work is over a threshold, and what was done."""
    parts, run = [], None
    ticks = side_ticks(measured, side)
    for tick, following in zip(ticks, ticks[1:] + [None]):
        until = following["at"] if following else scale.end
        if any(analysis.is_named(app, workload.names) for app in tick["seen"]):
            parts.append(rect("over", scale.x(tick["at"]), top,
                              scale.x(until) - scale.x(tick["at"]), 4))
        kind = outcome(tick, workload)
        if run and run[0] == kind:
            run[2] = until
        else:
            run = [kind, tick["at"], until]
            parts.append(run)
    return [part if isinstance(part, str) else
            rect(part[0], scale.x(part[1]), top + 6, scale.x(part[2]) - scale.x(part[1]), STRIP)
            for part in parts]


def lane(measured, workload, scale, index):
    side, title = SIDES[index]
    top = LANE_TOP + index * LANE_PITCH
    bottom = top + LANE_HEIGHT
    parts = [text(WIDTH - RIGHT, top - 8, title, anchor="end")]
    for percent in (0, scale.percent / 2, scale.percent):
        y = scale.y(percent, bottom)
        parts += [line("grid" if percent else "axis", LEFT, y, WIDTH - RIGHT, y),
                  text(LEFT - 6, y + 4, f"{percent:.0f} %", "s", "end")]
    parts.append(area(measured, side, workload, scale, bottom))
    return parts + strips(measured, side, workload, scale, bottom + 4)


def legend(y):
    x, parts = LEFT, []
    for kind, words, width in [("cpu", "CPU that counted", 138), ("over", "over a threshold", 134),
                               ("held", "held for this work", 146), ("grace", "held, grace", 106),
                               ("free", "may sleep", 0)]:
        parts += [rect(kind, x, y - 10, 14, 4 if kind == "over" else 12),
                  text(x + 20, y, words, "s")]
        x += 24 + width
    return parts


def time_axis(scale, y):
    first = int(scale.begin // 10 + 1) * 10
    ticks = range(first, int(scale.end) + 1, 10)
    return [text(scale.x(second), y, f"{second} s", "s", "middle") for second in ticks]


def timeline(workload, measured):
    scale = Scale(measured)
    end = measured["workSeconds"]
    bottom = LANE_TOP + 2 * LANE_PITCH - 24
    height = bottom + 46
    parts = [text(LEFT, 24, f"{workload.title}: what was seen of it, and what was done"),
             text((scale.x(0) + scale.x(end)) / 2, 46, "the work goes on", "s", "middle")]
    parts += [line("work", scale.x(at), 34, scale.x(at), bottom - 8) for at in (0, end)]
    for index in range(len(SIDES)):
        parts += lane(measured, workload, scale, index)
    parts += time_axis(scale, bottom + 6) + legend(bottom + 32)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" '
            f'font-family="system-ui, sans-serif">\n<style>{STYLE}</style>\n'
            f"<title>{html.escape(workload.title)}</title>\n" + "\n".join(parts) + "\n</svg>\n")
