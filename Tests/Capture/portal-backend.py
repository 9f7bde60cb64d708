#!/usr/bin/env python3
"""The part of a desktop that answers what to share, for xdg-desktop-portal: asks nobody, and does what a file says.
portal-backend.py FILE    a JSON object: node, answer (0 yes, 1 no, 2 otherwise, 3 none), kind, kinds, pointers; read anew each
time. Each question goes to FILE.log, a line of JSON each: what was asked, and what was restored."""
import json
import sys

from gi.repository import Gio, GLib

METHODS = {"CreateSession": "oosa{sv}", "SelectSources": "oosa{sv}", "Start": "oossa{sv}"}


def arguments(signature):
    pieces = [piece for piece in signature.replace("a{sv}", " a{sv}").split()]
    kinds = list(pieces[0]) + pieces[1:]
    return "".join(f'<arg type="{kind}" direction="in"/>' for kind in kinds)


ANSWER = '<arg type="u" direction="out"/><arg type="a{sv}" direction="out"/>'
XML = (
    '<node><interface name="org.freedesktop.impl.portal.ScreenCast">'
    + "".join(f'<method name="{name}">{arguments(kinds)}{ANSWER}</method>' for name, kinds in METHODS.items())
    + "".join(
        f'<property name="{name}" type="u" access="read"/>'
        for name in ("AvailableSourceTypes", "AvailableCursorModes", "version")
    )
    + '</interface><interface name="org.freedesktop.impl.portal.Session"><method name="Close"/>'
    '<signal name="Closed"/><property name="version" type="u" access="read"/></interface></node>'
)


class Backend:
    def __init__(self, file):
        self.file = file
        self.sessions = {}
        self.info = Gio.DBusNodeInfo.new_for_xml(XML)
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.bus.register_object(
            "/org/freedesktop/portal/desktop", self.info.interfaces[0], self.call, self.property, None
        )
        Gio.bus_own_name_on_connection(self.bus, "org.freedesktop.impl.portal.desktop.tavaro", 0, None, None)

    def orders(self):
        with open(self.file, encoding="utf-8") as file:
            return json.load(file)

    def property(self, bus, sender, path, interface, name):
        orders = self.orders()
        values = {"AvailableSourceTypes": orders["kinds"], "AvailableCursorModes": orders["pointers"], "version": 4}
        return GLib.Variant("u", values[name])

    def call(self, bus, sender, path, interface, method, parameters, invocation):
        given = parameters.unpack()
        answer = getattr(self, method)(*given)
        if answer is None:
            return
        code, results = answer
        invocation.return_value(GLib.Variant("(ua{sv})", (code, results)))
        if method == "Start" and self.orders().get("closes"):
            self.bus.emit_signal(None, given[1], "org.freedesktop.impl.portal.Session", "Closed", None)

    def CreateSession(self, handle, session, app, options):
        self.bus.register_object(
            session,
            self.info.interfaces[1],
            lambda *call: call[-1].return_value(None),
            lambda *name: GLib.Variant("u", 1),
            None,
        )
        return 0, {"session_id": GLib.Variant("s", "1")}

    def SelectSources(self, handle, session, app, options):
        self.sessions[session] = options
        return 0, {}

    def Start(self, handle, session, app, window, options):
        orders, asked = self.orders(), self.sessions[session]
        restored = asked.get("restore_data")
        with open(self.file + ".log", "a", encoding="utf-8") as log:
            line = {key: asked.get(key) for key in ("types", "cursor_mode", "persist_mode")}
            log.write(json.dumps(line | {"restored": restored[2] if restored else None}) + "\n")
        if orders["answer"] == 3:
            return None
        if orders["answer"]:
            return orders["answer"], {}
        about = {"size": GLib.Variant("(ii)", (160, 100)), "source_type": GLib.Variant("u", orders["kind"])}
        results = {"streams": GLib.Variant("a(ua{sv})", [(orders["node"], about)])}
        if asked.get("persist_mode"):
            results["persist_mode"] = GLib.Variant("u", asked["persist_mode"])
            restore = GLib.Variant("(suv)", ("tavaro", 1, GLib.Variant("s", orders["restore"])))
            results["restore_data"] = restore
        return 0, results


backend = Backend(sys.argv[1])
GLib.MainLoop().run()
