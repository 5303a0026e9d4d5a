"""What a screen reader would find in an application: roles, names, texts and states."""
import os
from dataclasses import dataclass


@dataclass(frozen=True)
class Node:
    role: str
    name: str
    text: str
    focused: bool
    enabled: bool


class Reader:
    """Reads one process's windows. There can be one session bus per driving process: the library keeps the first."""

    def __init__(self, bus_address):
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus_address
        import gi  # pylint: disable=import-outside-toplevel
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi, GLib  # pylint: disable=import-outside-toplevel
        self._atspi, self._errors = Atspi, GLib.Error
        Atspi.init()
        Atspi.set_timeout(2000, 5000)

    def nodes(self, pid):
        """Every node that is showing; empty while the application is not there or busy."""
        try:
            application = self._application(pid)
            found = []
            if application is not None:
                self._collect(application, found, depth=0)
            return found
        except self._errors:
            return []

    def _application(self, pid):
        desktop = self._atspi.get_desktop(0)
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            child = desktop.get_child_at_index(index)
            if child is not None and child.get_process_id() == pid:
                child.set_cache_mask(self._atspi.Cache.NONE)
                return child
        return None

    def _collect(self, node, found, depth):
        states = node.get_state_set()
        state = self._atspi.StateType
        if depth > 1 and not states.contains(state.SHOWING):
            return
        if depth > 0:
            found.append(Node(node.get_role_name(), node.get_name() or "", self._text(node),
                              states.contains(state.FOCUSED), states.contains(state.ENABLED)))
        for index in range(node.get_child_count()):
            child = node.get_child_at_index(index)
            if child is not None:
                self._collect(child, found, depth + 1)

    def _text(self, node):
        text = node.get_text_iface()
        return self._atspi.Text.get_text(text, 0, -1) if text else ""
