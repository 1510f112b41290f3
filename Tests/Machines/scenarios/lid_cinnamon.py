"""The lid in a session of Cinnamon."""
import lid_session
import session_cinnamon

TITLE = "Cinnamon, the lid"
MACHINES = session_cinnamon.MACHINES


def run(trial):
    lid_session.make(trial)
    session_cinnamon.prepare(trial.machine)
    lid_session.run(trial, session_cinnamon.DESKTOP)
