"""The lid in a session of KDE Plasma on Wayland."""
import lid_session
import session
import session_kde

TITLE = "KDE Plasma on Wayland, the lid"
MACHINES = session_kde.MACHINES


def run(trial):
    lid_session.make(trial)
    session_kde.prepare(trial.machine)
    session_kde.Holds(session.Session(trial, session_kde.DESKTOP))
    lid_session.run(trial, session_kde.DESKTOP)
