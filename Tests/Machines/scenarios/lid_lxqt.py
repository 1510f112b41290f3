"""The lid in a session of LXQt."""
import lid_session
import session_lxqt

TITLE = "LXQt, the lid"
MACHINES = session_lxqt.MACHINES


def run(trial):
    lid_session.make(trial)
    session_lxqt.prepare(trial.machine)
    lid_session.run(trial, session_lxqt.DESKTOP)
