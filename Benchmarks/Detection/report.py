"""Puts findings into a table, and the table into the document."""
import analysis

BEGIN = "<!-- measured: begin -->"
END = "<!-- measured: end -->"


def first_text(finding):
    return "never" if finding.first is None else f"{finding.first:.0f} s"


def share_text(finding):
    if finding.first is None:
        return "–"
    return f"{100 * finding.share:.0f} % / {100 * finding.share_after:.0f} %"


def gaps_text(finding):
    if finding.first is None:
        return "–"
    return f"{finding.gaps}, up to {finding.longest_gap:.0f} s" if finding.gaps else "none"


def released_text(finding):
    return "–" if finding.released is None else f"{finding.released:.0f} s"


def names_text(finding):
    shown = ", ".join(finding.names[:3]) + (", …" if len(finding.names) > 3 else "")
    return shown or "–"


def verdict_text(side, finding, measured, workload):
    met = analysis.is_met(finding, measured, workload)
    # What the rules lead to is known for the program as it is.
    if side == "plain" or analysis.is_expected(finding, measured, workload):
        return "yes" if met else "**no**" if side == "plain" else "no, as the rules say"
    return "yes, against the rules" if met else "**no**"


def row(workload, side, finding, verdict):
    cells = [workload.title if side == "plain" else "", side, first_text(finding),
             share_text(finding), gaps_text(finding), released_text(finding), names_text(finding),
             verdict]
    return "| " + " | ".join(cells) + " |"


def table(results):
    """`results`: pairs of a workload and what was measured."""
    lines = ["| workload | | found after | found: of all the time / since then | lost again | "
             "released after | under the names | as wanted |", "|---|---|---|---|---|---|---|---|"]
    notes = []
    for workload, measured in results:
        for side in ("plain", "whole"):
            finding = analysis.find(measured, side, workload)
            lines.append(row(workload, side, finding,
                             verdict_text(side, finding, measured, workload)))
        notes += [f"* {workload.title}: {doubt}." for doubt in analysis.doubts(measured, workload)]
        others = analysis.find(measured, "whole", workload).others
        if others and workload.is_work:
            notes.append(f"* {workload.title}: also found, and not counted: {', '.join(others)}.")
    return "\n".join(lines + ([""] + notes if notes else []))


def verdict(results):
    lines = []
    for side in ("plain", "whole"):
        for is_work, what in ((True, "lasting workloads found in time and without a gap"),
                              (False, "quiet ones left alone")):
            chosen = [pair for pair in results if pair[0].is_work == is_work]
            met = sum(analysis.is_met(analysis.find(measured, side, workload), measured, workload)
                      for workload, measured in chosen)
            lines.append(f"* {side}: {met} of {len(chosen)} {what}.")
    expected = sum(analysis.is_expected(analysis.find(measured, "whole", workload), measured,
                                        workload) for workload, measured in results)
    lines.append(f"* whole: {expected} of {len(results)} as the rules say.")
    return "\n".join(lines)


def reasons(results):
    """Why work is missed, one line for each workload for which the rules say so."""
    return "\n".join(f"* {workload.title}: {workload.missed_because}." for workload, _ in results
                     if workload.missed_because)


def write_into(document, text):
    before, rest = document.read_text().split(BEGIN, 1)
    _, after = rest.split(END, 1)
    document.write_text(f"{before}{BEGIN}\n\n{text}\n\n{END}{after}")
