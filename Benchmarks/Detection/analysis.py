"""What the record of one workload says: when it was found, how steadily, and when it was released."""
import dataclasses
import fnmatch

TICK = 2.0
LATENESS = 0.5  # How late a tick may be.


@dataclasses.dataclass
class Finding:
    """One side of one measurement. Times in seconds; `None` for what never happened."""
    first: float | None     # From the start of the work until it was found.
    share: float            # Of the whole time of the work, how much it was found.
    share_after: float      # Likewise, from `first` on.
    gaps: int               # Times that it was lost again while it went on.
    longest_gap: float
    released: float | None  # From the end of the work until the machine was released.
    names: list             # What the hold was put down to, the most frequent first.
    reason: str             # One of the reasons given.
    others: list            # Also found at the time, and no part of the workload.


def steps(ticks, end):
    """Each tick with the time that its outcome stood, within the time of the work."""
    for tick, following in zip(ticks, ticks[1:] + [None]):
        begin = max(0.0, tick["at"])
        until = min(end, following["at"] if following else end)
        if until > begin:
            yield tick, begin, until


def is_named(app, names):
    return any(fnmatch.fnmatchcase(app["id"], pattern) for pattern in names)


def working(tick, workload):
    """What the engine holds the machine awake for, as far as it is the workload's."""
    if tick["status"] != "holding":
        return []
    # What is no work has no names: it must not be found under any.
    return [app for app in tick["busy"] if not workload.is_work or is_named(app, workload.names)]


def ranked(counts):
    return [name for name, _ in sorted(counts.items(), key=lambda item: -item[1])]


def gaps_of(ticks, end, first, workload):
    gaps, current = [], 0.0
    for tick, begin, until in steps(ticks, end):
        if until <= first:
            continue
        if not working(tick, workload):
            current += until - begin
        elif current:
            gaps.append(current)
            current = 0.0
    return gaps + [current] if current else gaps


def release_after(side, end):
    for event in side["holds"]:
        if event["what"] == "release" and event["at"] >= end:
            return event["at"] - end
    return None


def find(measured, side_name, workload):
    side, end = measured[side_name], measured["workSeconds"]
    names, others, reasons = {}, {}, {}
    first, found = None, 0.0
    for tick, begin, until in steps(side["ticks"], end):
        apps = working(tick, workload)
        for app in tick["busy"]:
            counts = names if app in apps else others
            counts[app["name"]] = counts.get(app["name"], 0) + until - begin
        if apps:
            first = begin if first is None else first
            found += until - begin
            reasons.setdefault(f"{apps[0]['name']}: {apps[0]['reason']}", None)
    gaps = gaps_of(side["ticks"], end, first, workload) if first is not None else []
    return Finding(
        first, found / end, found / (end - first) if first is not None else 0.0, len(gaps),
        max(gaps, default=0.0), release_after(side, end) if first is not None else None,
        ranked(names), list(reasons)[len(reasons) // 2] if reasons else "", ranked(others))


def latest_first(measured):
    """The sustain time, and two ticks: the one on which the work first shows and the one on which
    it has lasted long enough, each as late as it may be."""
    return measured["settings"]["sustainSeconds"] + 2 * (TICK + LATENESS)


def is_met(finding, measured, workload):
    if not workload.is_work:
        return finding.first is None
    # To a tenth: a tick is a few thousandths late as it is.
    return finding.first is not None and \
        round(finding.first, 1) <= latest_first(measured) and finding.gaps == 0


def is_expected(finding, measured, workload):
    """Whether the outcome is the one that follows from the rules of the program."""
    if workload.missed_because:
        return finding.first is None
    return is_met(finding, measured, workload)


def doubts(measured, workload):
    """Why the measurement may say less than it seems to."""
    found = []
    if measured["machineCpuBefore"] > 10:
        found.append(f"the machine was {measured['machineCpuBefore']:.0f} % busy before")
    ignored = [key for key in measured["ignored"] if is_named({"id": key}, workload.names)]
    if ignored:
        found.append(f"ignored, as busy before: {', '.join(ignored)}")
    if measured["exitStatus"] is not None:
        found.append(f"ended by itself after {measured['workSeconds']:.0f} s with status "
                     f"{measured['exitStatus']:.0f}")
    return found
