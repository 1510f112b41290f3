"""A lid that the kernel takes for a real one, and what is known of it."""

#: For so long after its start, and after waking, logind ignores the lid.
HOLDOFF_SECONDS = 35


def set_lid(trial, closed):
    trial.machine.shell(f"echo {int(closed)} >/run/lid")
    trial.say("the lid is closed" if closed else "the lid is open")


def is_known(trial, closed):
    """Whether logind knows it, on a machine that is awake."""
    known = trial.machine.shell("busctl get-property org.freedesktop.login1 /org/freedesktop/login1 "
                                "org.freedesktop.login1.Manager LidClosed").strip()
    return trial.check(known == f"b {str(closed).lower()}", f"logind knows the lid: {known}")


def make_lid(trial):
    machine = trial.machine
    machine.shell("modprobe uinput && mkfifo /run/lid && systemd-run --quiet --unit=lid "
                  "/usr/local/lib/machine/lid.py /run/lid && udevadm settle")
    set_lid(trial, False)
    return is_known(trial, False)


def locks_the_lid(trial):
    return any(lock["who"] == "Staylit" and "handle-lid-switch" in lock["what"]
               for lock in trial.machine.locks)
