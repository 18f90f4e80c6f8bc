# SPDX-License-Identifier: MIT
"""A stand-in for the desktop's file manager."""

from gi.repository import Gio, GLib

from screenreader import wait_for

NAME = "org.freedesktop.FileManager1"
INTERFACE = f"""<node><interface name="{NAME}"><method name="ShowItems">
<arg type="as" direction="in"/><arg type="s" direction="in"/></method></interface></node>"""


class FileManager:
    """Records the items that it was asked to select, once it owns its name on the session bus."""

    def __init__(self):
        self._selected = []
        self._owned = False
        self._owner = Gio.bus_own_name(Gio.BusType.SESSION, NAME, Gio.BusNameOwnerFlags.NONE,
                                       self._on_bus, self._on_owned, None)
        wait_for("the file manager's name", lambda: self._turn() or self._owned)

    def _on_bus(self, connection, _name):
        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        connection.register_object("/" + NAME.replace(".", "/"), interface, self._on_call, None, None)

    def _on_owned(self, _connection, _name):
        self._owned = True

    def _on_call(self, _connection, _sender, _path, _interface, _method, arguments, invocation):
        self._selected.append(arguments.unpack()[0])
        invocation.return_value(None)

    @staticmethod
    def _turn():
        while GLib.MainContext.default().iteration(False):
            pass

    @property
    def selected(self):
        self._turn()
        return self._selected

    def close(self):
        Gio.bus_unown_name(self._owner)
