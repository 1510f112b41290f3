"""The lid in a session of MATE."""
import lid_session
import session_mate

TITLE = "MATE, the lid"
MACHINES = session_mate.MACHINES


def run(trial):
    lid_session.make(trial)
    session_mate.prepare(trial.machine)
    lid_session.run(trial, session_mate.DESKTOP)
