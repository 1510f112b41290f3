"""The lid in a session of sway."""
import lid_session
import session_sway

TITLE = "sway, the lid"
MACHINES = session_sway.MACHINES


def run(trial):
    lid_session.make(trial)
    session_sway.prepare(trial.machine)
    lid_session.run(trial, session_sway.DESKTOP)
