"""Asks a window to close, by the message that a title bar's button sends; the display has no window manager to do it."""
import ctypes


class _ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("data", ctypes.c_long * 5)]


class _Event(ctypes.Union):
    _fields_ = [("message", _ClientMessage), ("pad", ctypes.c_long * 24)]


CLIENT_MESSAGE = 33


def ask_to_close(display_name, window):
    x11 = ctypes.CDLL("libX11.so.6")
    x11.XOpenDisplay.restype = ctypes.c_void_p
    x11.XInternAtom.restype = ctypes.c_ulong
    x11.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
    x11.XSendEvent.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_long, ctypes.c_void_p]
    x11.XCloseDisplay.argtypes = [ctypes.c_void_p]
    display = x11.XOpenDisplay(display_name.encode())
    if not display:
        raise RuntimeError(f"the display {display_name} cannot be opened")
    event = _Event()
    event.message.type = CLIENT_MESSAGE
    event.message.window = window
    event.message.message_type = x11.XInternAtom(display, b"WM_PROTOCOLS", 0)
    event.message.format = 32
    event.message.data[0] = x11.XInternAtom(display, b"WM_DELETE_WINDOW", 0)
    x11.XSendEvent(display, window, 0, 0, ctypes.byref(event))
    x11.XCloseDisplay(display)
