"""The lid in a session of GNOME on Wayland."""
import lid_session
import session_gnome

TITLE = "GNOME on Wayland, the lid"
MACHINES = session_gnome.MACHINES


def run(trial):
    lid_session.make(trial)
    session_gnome.prepare(trial.machine)
    lid_session.run(trial, session_gnome.DESKTOP)
