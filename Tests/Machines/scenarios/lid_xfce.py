"""The lid in a session of XFCE."""
import lid_session
import session_xfce

TITLE = "XFCE, the lid"
MACHINES = session_xfce.MACHINES


def run(trial):
    lid_session.make(trial)
    session_xfce.prepare(trial.machine)
    lid_session.run(trial, session_xfce.DESKTOP)
