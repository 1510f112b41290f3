"""What is kept of a run, and the table of docs/Machines.md."""
import dataclasses
import datetime
import json

BEGIN, END = "<!-- machines: begin -->", "<!-- machines: end -->"
HEAD = ("| scenario | machine | held after | released after | asleep after work | sleeps | "
        "did not hold | on |")
COLUMNS = ("held after", "released after", "asleep after work")


@dataclasses.dataclass
class Result:
    scenario: str
    title: str
    machine: str  #: The versions that count.
    figures: dict
    findings: list
    skipped: list
    on: str = dataclasses.field(default_factory=lambda: datetime.date.today().isoformat())

    def save(self, path):
        path.write_text(json.dumps(dataclasses.asdict(self), indent=1) + "\n")

    def row(self):
        sleeps = sum(len(seconds) for name, seconds in self.figures.items()
                     if name.startswith("asleep"))
        cells = [f"`{self.scenario}`: {self.title}", self.machine,
                 *(span(self.figures.get(column, [])) for column in COLUMNS),
                 str(sleeps), str(len(self.findings)), self.on]
        return f"| {' | '.join(cells)} |"


def load(path):
    return Result(**json.loads(path.read_text()))


def span(seconds):
    """The shortest and the longest, as people write it."""
    if not seconds:
        return "–"
    least, most = round(min(seconds)), round(max(seconds))
    return f"{least} s" if least == most else f"{least} to {most} s"


def with_row(document, name, row):
    """The document with this row in its table, in place of the scenario's row from before."""
    before, rest = document.split(BEGIN)
    table, after = rest.split(END)
    rows = {line.split("`")[1]: line for line in table.splitlines() if line.startswith("| `")}
    rows[name] = row
    lines = [BEGIN, HEAD, "|" + "---|" * (HEAD.count("|") - 1), *(rows[key] for key in sorted(rows))]
    return before + "\n".join(lines) + "\n" + END + after
