#!/usr/bin/env python3
"""The part of a desktop that answers what to share, for xdg-desktop-portal: asks nobody, and does what a file says.
portal-backend.py FILE [mutter]    a JSON object: node, answer (0 yes, 1 no, 2 otherwise, 3 none), kind, kinds, pointers; read anew each
time. Each question goes to FILE.log, a line of JSON each: what was asked, and what was restored.

With "mutter" it shares what that compositor has, its screen or the window in front, as the real part of its desktop does
once the user has chosen. The pointer goes where FILE.pointer says, "X Y", of what is shared."""
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


CAST, CONTROL = "org.gnome.Mutter.ScreenCast", "org.gnome.Mutter.RemoteDesktop"


class Mutter:
    def __init__(self, bus, file):
        self.bus = bus
        self.file = file
        self.pointer = None

    def call(self, of, path, interface, method, arguments=None):
        path = path or "/" + of.replace(".", "/")
        return self.bus.call_sync(of, path, of + interface, method, arguments, None, 0, 5000, None).unpack()

    def share(self, kind, pointer):
        """The node of the screen (1) or the window in front (2), with the pointer hidden, embedded or told."""
        control = self.call(CONTROL, None, "", "CreateSession")[0]
        name = GLib.Variant("(ss)", (CONTROL + ".Session", "SessionId"))
        known = self.bus.call_sync(CONTROL, control, "org.freedesktop.DBus.Properties", "Get", name, None, 0, 5000, None)
        joined = {"remote-desktop-session-id": GLib.Variant("s", known.unpack()[0])}
        session = self.call(CAST, None, "", "CreateSession", GLib.Variant("(a{sv})", (joined,)))[0]
        modes = {"cursor-mode": GLib.Variant("u", {1: 0, 2: 1, 4: 2}[pointer])}
        if kind == 1:
            stream = self.call(CAST, session, ".Session", "RecordMonitor", GLib.Variant("(sa{sv})", ("", modes)))[0]
        else:
            stream = self.call(CAST, session, ".Session", "RecordWindow", GLib.Variant("(a{sv})", (modes,)))[0]
        nodes = []
        self.bus.signal_subscribe(None, CAST + ".Stream", "PipeWireStreamAdded", stream, None, 0,
                                  lambda *signal: nodes.append(signal[5].unpack()[0]))
        self.call(CONTROL, control, ".Session", "Start")
        shift = 42
        for isDown in (True, False):  # without a keyboard, no program is told that its window is in front
            self.call(CONTROL, control, ".Session", "NotifyKeyboardKeycode", GLib.Variant("(ub)", (shift, isDown)))
        while not nodes:
            GLib.MainContext.default().iteration(True)
        GLib.timeout_add(20, self.move, control, stream)
        return nodes[0]

    def move(self, control, stream):
        try:
            with open(self.file + ".pointer", encoding="utf-8") as file:
                wanted = tuple(map(float, file.read().split()))
        except FileNotFoundError:
            return True
        if wanted != self.pointer and len(wanted) == 2:
            place = GLib.Variant("(sdd)", (stream, *wanted))
            self.call(CONTROL, control, ".Session", "NotifyPointerMotionAbsolute", place)
            self.pointer = wanted
        return True


class Backend:
    def __init__(self, file, desktop):
        self.file = file
        self.sessions = {}
        self.info = Gio.DBusNodeInfo.new_for_xml(XML)
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.mutter = Mutter(self.bus, file) if desktop == "mutter" else None
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
        about = {"source_type": GLib.Variant("u", orders["kind"])}
        node = orders["node"]
        if self.mutter:
            try:
                node = self.mutter.share(orders["kind"], asked["cursor_mode"])
            except GLib.Error as error:
                print(error.message, flush=True)
                return 2, {}
        else:
            about["size"] = GLib.Variant("(ii)", (160, 100))
        results = {"streams": GLib.Variant("a(ua{sv})", [(node, about)])}
        if asked.get("persist_mode"):
            results["persist_mode"] = GLib.Variant("u", asked["persist_mode"])
            restore = GLib.Variant("(suv)", ("tavaro", 1, GLib.Variant("s", orders["restore"])))
            results["restore_data"] = restore
        return 0, results


backend = Backend(sys.argv[1], sys.argv[2] if len(sys.argv) > 2 else None)
GLib.MainLoop().run()
