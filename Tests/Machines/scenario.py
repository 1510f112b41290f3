"""What a scenario is, and where scenarios are found: each file in scenarios/ is one.

A scenario's file has a title (TITLE), the machines on which it runs (MACHINES) and what happens there
(run, which gets a Trial).
"""
import dataclasses
import importlib.util
import pathlib
import sys
import typing

HERE = pathlib.Path(__file__).resolve().parent


@dataclasses.dataclass(frozen=True)
class Machine:
    """A kind of machine."""
    release: str
    packages: tuple = ()
    own_packages: tuple = ("staylit",)
    memory: str = "1G"
    screen: str = ""  #: The graphics card, by QEMU's name.
    own_time: bool = False  #: Whether its clock counts what it does (machine.OWN_TIME).


@dataclasses.dataclass(frozen=True)
class Scenario:
    name: str
    title: str
    machine: Machine
    run: typing.Callable


def bare(*releases, **more):
    """Machines without a desktop, one of each release."""
    return [Machine(release, **more) for release in releases]


def load(path):
    # Scenarios may begin as another one does.
    if str(path.parent) not in sys.path:
        sys.path.append(str(path.parent))
    spec = importlib.util.spec_from_file_location(f"scenario_{path.stem}", path)
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    family = path.stem.replace("_", "-")
    return [Scenario(f"{family}-{machine.release}", module.TITLE, machine, module.run)
            for machine in module.MACHINES]


def known(folder=HERE / "scenarios"):
    return [scenario for path in sorted(folder.glob("*.py")) for scenario in load(path)]


def chosen(scenarios, names):
    """Those with these names; a name without its release means all of them. Raises KeyError with the
    names that nothing has."""
    def fits(scenario, name):
        return name in (scenario.name, scenario.name.removesuffix(f"-{scenario.machine.release}"))

    unknown = [name for name in names if not any(fits(one, name) for one in scenarios)]
    if unknown:
        raise KeyError(", ".join(unknown))
    return [one for one in scenarios if any(fits(one, name) for name in names)]
