"""Drives a built installer from outside: a display of its own, real key presses, and what a screen reader would read."""
