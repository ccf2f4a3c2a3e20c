#!/usr/bin/python3
"""Stand-ins for what the tray benchmark cannot run here: a desktop panel and a person.

  tray_host.py watcher         owns org.kde.StatusNotifierWatcher on the session bus and says a
                               host is registered, as a panel would; it draws nothing.
  tray_host.py close TITLE     asks each mapped X window titled TITLE to close
                               (WM_DELETE_WINDOW), as a click on the title bar's close button does.
"""
import ctypes
import sys


def watcher():
    import dbus
    import dbus.service
    from dbus.mainloop.glib import DBusGMainLoop
    from gi.repository import GLib

    DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    iface = "org.kde.StatusNotifierWatcher"

    class Watcher(dbus.service.Object):
        items = []

        @dbus.service.method(iface, in_signature="s", out_signature="")
        def RegisterStatusNotifierItem(self, service):
            self.items.append(str(service))
            print("registered", service, flush=True)

        @dbus.service.method(iface, in_signature="s", out_signature="")
        def RegisterStatusNotifierHost(self, service):
            pass

        @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
        def Get(self, interface, name):
            if name == "IsStatusNotifierHostRegistered":
                return dbus.Boolean(True)
            if name == "RegisteredStatusNotifierItems":
                return dbus.Array(self.items, signature="s")
            if name == "ProtocolVersion":
                return dbus.Int32(0)
            raise dbus.exceptions.DBusException("no such property", name=dbus.PROPERTIES_IFACE + ".Error")

    name = dbus.service.BusName(iface, bus)
    Watcher(bus, "/StatusNotifierWatcher")
    print("watcher ready", flush=True)
    GLib.MainLoop().run()
    del name


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("l", ctypes.c_long * 5)]


class XEvent(ctypes.Union):
    _fields_ = [("client", ClientMessage), ("pad", ctypes.c_long * 24)]


class Attributes(ctypes.Structure):
    _fields_ = [("x", ctypes.c_int), ("y", ctypes.c_int), ("width", ctypes.c_int), ("height", ctypes.c_int),
                ("border_width", ctypes.c_int), ("depth", ctypes.c_int), ("visual", ctypes.c_void_p),
                ("root", ctypes.c_ulong), ("class_", ctypes.c_int), ("bit_gravity", ctypes.c_int),
                ("win_gravity", ctypes.c_int), ("backing_store", ctypes.c_int), ("backing_planes", ctypes.c_ulong),
                ("backing_pixel", ctypes.c_ulong), ("save_under", ctypes.c_int), ("colormap", ctypes.c_ulong),
                ("map_installed", ctypes.c_int), ("map_state", ctypes.c_int), ("all_event_masks", ctypes.c_long),
                ("your_event_mask", ctypes.c_long), ("do_not_propagate_mask", ctypes.c_long),
                ("override_redirect", ctypes.c_int), ("screen", ctypes.c_void_p)]


def close(title):
    x = ctypes.cdll.LoadLibrary("libX11.so.6")
    x.XOpenDisplay.restype = ctypes.c_void_p
    x.XDefaultRootWindow.restype = ctypes.c_ulong
    x.XInternAtom.restype = ctypes.c_ulong
    x.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
    x.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
    x.XQueryTree.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(ctypes.c_ulong),
                             ctypes.POINTER(ctypes.c_ulong), ctypes.POINTER(ctypes.POINTER(ctypes.c_ulong)),
                             ctypes.POINTER(ctypes.c_uint)]
    x.XFetchName.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(ctypes.c_char_p)]
    x.XGetWindowAttributes.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.POINTER(Attributes)]
    x.XSendEvent.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_long, ctypes.POINTER(XEvent)]
    x.XFlush.argtypes = [ctypes.c_void_p]
    display = x.XOpenDisplay(None)
    if not display:
        sys.exit("no X display")
    root = x.XDefaultRootWindow(display)
    protocols = x.XInternAtom(display, b"WM_PROTOCOLS", 0)
    delete = x.XInternAtom(display, b"WM_DELETE_WINDOW", 0)
    r, p, kids, n = ctypes.c_ulong(), ctypes.c_ulong(), ctypes.POINTER(ctypes.c_ulong)(), ctypes.c_uint()
    x.XQueryTree(display, root, ctypes.byref(r), ctypes.byref(p), ctypes.byref(kids), ctypes.byref(n))
    closed = 0
    for i in range(n.value):
        w = kids[i]
        name = ctypes.c_char_p()
        attrs = Attributes()
        if not x.XFetchName(display, w, ctypes.byref(name)) or name.value != title.encode():
            continue
        x.XGetWindowAttributes(display, w, ctypes.byref(attrs))
        if attrs.map_state != 2:  # IsViewable
            continue
        ev = XEvent()
        ev.client.type = 33  # ClientMessage
        ev.client.window = w
        ev.client.message_type = protocols
        ev.client.format = 32
        ev.client.l[0] = delete
        x.XSendEvent(display, w, 0, 0, ctypes.byref(ev))
        closed += 1
    x.XFlush(display)
    print("closed", closed)
    sys.exit(0 if closed else 1)


if __name__ == "__main__":
    if sys.argv[1:2] == ["watcher"]:
        watcher()
    elif sys.argv[1:2] == ["close"] and len(sys.argv) == 3:
        close(sys.argv[2])
    else:
        sys.exit(__doc__)
