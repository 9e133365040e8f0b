"""Effects from Python: every export of the library that works on buffers,
called by its own name with its header parameter names as keywords.

    import effects
    out = effects.VexoGamma32(picture, gamma=2.2)   # picture: uint8 (height, width, 4)
    out = effects.VexoGamma(picture, gamma=2.2)     # the member for the array's dtype

Pictures are numpy arrays of shape (height, width, 4) whose last axis is in
the library's memory order: blue, green, red, mask. The dtype names the
layout: uint8 for the 32 members (0..255), uint16 for the 64 members (15 bits
in 16: 0..32767) and float32 for the 128 members (1.0 = full). 3-channel
buffers are (height, width, 3) arrays (RGBE buffers (height, width, 4) of
uint8).

How the arguments are filled in (the same rules as the `effects` command):
- The first picture the export only reads, or else the picture it changes
  in place, is the positional argument. Any other picture is a keyword
  argument with its parameter's name (source=..., canvas=...).
- Widths, heights and element counts come from the arrays. A picture the
  export writes without reading it first (a target, a destination) is made
  blank; its size parameters are keywords that default to the size of the
  positional picture.
- Every other parameter is a keyword argument; `reserved` parameters default
  to 0 and `channel` to 1 (all colour elements).
- The arrays passed in are never changed: the result is a new array: the
  picture the export writes. An export that writes no picture returns a
  dict of its measurements and "result" (histograms), or its C result.

The library is loaded on first use: from the file named by the environment
variable EFFECTS_LIBRARY if set, else from beside the package (an installed
copy, or build/release or build/dev of a clone), else through the system's
loader. Bad arrays and values raise ValueError before anything reaches C;
ctypes releases the GIL during each call.
"""

import ctypes
import os
import sys

from ._exports import EXPORTS

try:  # numpy is needed for calls, not for importing the package
    import numpy as _np
except ImportError:  # pragma: no cover - depends on the interpreter
    _np = None

__all__ = ["EXPORTS", "LibraryNotFound", "library", "exports"]


class LibraryNotFound(OSError):
    """The shared library could not be loaded."""


def _library_name():
    if os.name == "nt":
        return "Effects.dll"
    if sys.platform == "darwin":
        return "libEffects.dylib"
    return "libEffects.so"


def _candidates():
    explicit = os.environ.get("EFFECTS_LIBRARY")
    if explicit:
        return [explicit]
    name = _library_name()
    here = os.path.dirname(os.path.abspath(__file__))
    found = [os.path.join(here, name)]
    try:  # written by `cmake --install`: where the library went
        from ._installed import LIBRARY_DIR
        found.append(os.path.normpath(os.path.join(here, LIBRARY_DIR, name)))
    except ImportError:
        pass
    root = os.path.dirname(os.path.dirname(here))
    found += [os.path.join(root, "build", preset, "bin", name) for preset in ("release", "dev")]
    return found + [name]


_loaded = None


def library():
    """The loaded shared library (a ctypes.CDLL), loading it on first use."""
    global _loaded
    if _loaded is None:
        tried = []
        for path in _candidates():
            if os.sep in path and not os.path.exists(path):
                tried.append(f"{path} (no such file)")
                continue
            try:
                _loaded = ctypes.WinDLL(path) if _stdcall() else ctypes.CDLL(path)
                break
            except OSError as err:
                tried.append(f"{path} ({err})")
        else:
            raise LibraryNotFound("cannot load the Effects library; tried: " + "; ".join(tried) +
                                  ". Set EFFECTS_LIBRARY to its path.")
    return _loaded


def _stdcall():
    # The exports are __stdcall on 32-bit Windows.
    return os.name == "nt" and ctypes.sizeof(ctypes.c_void_p) == 4


_SCALARS = {
    "int32_t": (ctypes.c_int32, -2**31, 2**31 - 1), "uint32_t": (ctypes.c_uint32, 0, 2**32 - 1),
    "uint8_t": (ctypes.c_uint8, 0, 255), "uint16_t": (ctypes.c_uint16, 0, 65535),
    "intptr_t": (ctypes.c_ssize_t, -2**(8 * ctypes.sizeof(ctypes.c_void_p) - 1),
                 2**(8 * ctypes.sizeof(ctypes.c_void_p) - 1) - 1),
    "float": (ctypes.c_float, None, None), "double": (ctypes.c_double, None, None),
}
_RESULTS = {"void": None, "int32_t": ctypes.c_int32, "uint32_t": ctypes.c_uint32, "double": ctypes.c_double}
_DTYPES = {"Pixel32": "uint8", "Pixel64": "uint16", "Pixel128": "float32",
           "uint8_t": "uint8", "uint16_t": "uint16", "float": "float32"}
_LAYOUT_OF_DTYPE = {"uint8": 32, "uint16": 64, "float32": 128}


def _base(ctype):
    return ctype.replace("const ", "").rstrip("*").strip()


def _not_callable(params):
    for name, ctype, role, use, shape in params:
        if role in ("device", "bitmap"):
            return f"draws on a device context ('{name}')"
        if ctype == "EffectsStream*":
            return f"reads from a stream ('{name}'); use RGBE_LoadHDR"
        if shape and shape[0] == "unknown":
            return f"has a buffer of unknown size ('{name}')"
    return None


def _binding(params):
    """(main, output) parameter indices, as the command-line tool binds them."""
    def pictured(p):
        return p[4] is not None and p[4][0] in ("picture", "samples")
    main = next((i for i, p in enumerate(params) if pictured(p) and p[3] == "in"), None)
    if main is None:
        main = next((i for i, p in enumerate(params) if p[4] and p[4][0] == "picture" and p[3] == "out"), None)
    output = next((i for i, p in enumerate(params) if pictured(p) and p[3] == "out"), None)
    return main, output


def _numpy():
    if _np is None:
        raise ImportError("effects needs numpy to call the library (Debian: apt-get install python3-numpy)")
    return _np


class _Export:
    """One export as a Python function."""

    def __init__(self, name, entry):
        self.__name__ = self.name = name
        self.result, self.platforms, self.family, self.layouts, self.size, self.help, self.params = entry
        self.main, self.output = _binding(self.params)
        self.__doc__ = self._doc()
        self._function = None

    def _doc(self):
        sig = ", ".join(f"{ctype} {name}" for name, ctype, *_ in self.params)
        lines = [f"{self.name}({sig}) -> {self.result}", "", self.help, ""]
        for i, (name, ctype, role, use, shape) in enumerate(self.params):
            if i == self.main:
                how = "positional array"
            elif shape and shape[0] in ("picture", "samples") and use != "scratch":
                how = "keyword array (required)" if use == "in" else "made blank, or a keyword array"
            elif shape or role in ("count", "width", "height"):
                how = "filled in" if not (role in ("width", "height") and self._written_size(name)) else \
                    "keyword, default: the positional picture's"
            else:
                how = "keyword" + (" (default 0)" if role == "reserved" else " (default 1)" if role == "channel" else "")
            lines.append(f"  {name}: {how}")
        return "\n".join(lines)

    def _written_size(self, size_name):
        for name, ctype, role, use, shape in self.params:
            if shape and size_name in shape[3]:
                return use == "out" and self.params.index((name, ctype, role, use, shape)) != self.main
        return False

    def _c_function(self):
        if self._function is None:
            f = getattr(library(), self.name)
            f.restype = _RESULTS[self.result]
            f.argtypes = [_SCALARS[c][0] if c in _SCALARS else
                          ctypes.c_char_p if c == "const char*" else ctypes.c_void_p
                          for _, c, *_ in self.params]
            self._function = f
        return self._function

    def _array(self, index, value, what):
        np = _numpy()
        name, ctype, role, use, shape = self.params[index]
        dtype = np.dtype(_DTYPES[_base(ctype)])
        channels = shape[1]
        if not isinstance(value, np.ndarray):
            raise ValueError(f"{self.name}: {what} '{name}' must be a numpy array, got {type(value).__name__}")
        if value.dtype != dtype or value.ndim != 3 or value.shape[2] != channels:
            raise ValueError(f"{self.name}: '{name}' must be a {dtype} array of shape (height, width, {channels}),"
                             f" got {value.dtype} {value.shape}")
        if value.shape[0] < 1 or value.shape[1] < 1:
            raise ValueError(f"{self.name}: '{name}' has no pixels {value.shape}")
        if value.shape[0] * value.shape[1] * 4 > 2**31 - 1:
            raise ValueError(f"{self.name}: '{name}' is too large for the library {value.shape}")
        return np.array(value, dtype=dtype, order="C", copy=True)

    def __call__(self, *pictures, **kwargs):
        np = _numpy()
        why = _not_callable(self.params)
        if why:
            raise ValueError(f"{self.name} {why}")
        if len(pictures) > (1 if self.main is not None else 0):
            raise TypeError(f"{self.name} takes {'one positional picture' if self.main is not None else 'no positional arguments'}")
        names = [p[0] for p in self.params]
        for key in kwargs:
            if key not in names:
                raise TypeError(f"{self.name} has no parameter '{key}' (its parameters: {', '.join(names) or 'none'})")
        arrays = {}
        if self.main is not None:
            if not pictures:
                raise TypeError(f"{self.name} needs its picture '{names[self.main]}' as the first argument")
            arrays[self.main] = self._array(self.main, pictures[0], "picture")
        for i, (name, ctype, role, use, shape) in enumerate(self.params):
            if i == self.main or not shape or shape[0] not in ("picture", "samples") or use == "scratch":
                continue
            if name in kwargs:
                arrays[i] = self._array(i, kwargs[name], "picture")
            elif use == "in":
                raise TypeError(f"{self.name} needs the picture '{name}' as a keyword argument")

        # Sizes: from the arrays, else keywords, else the main picture's size.
        sizes = {}
        main_shape = arrays[self.main].shape if self.main is not None else None
        for i, array in arrays.items():
            shape = self.params[i][4]
            h, w = array.shape[0], array.shape[1]
            got = {shape[3][0]: w * h * 4} if len(shape[3]) == 1 else dict(zip(shape[3], (w, h)))
            for key, v in got.items():
                if key in sizes and sizes[key] != v:
                    raise ValueError(f"{self.name}: the arrays for '{key}' differ in size")
                if key in kwargs:
                    raise TypeError(f"{self.name}: '{key}' comes from the array '{self.params[i][0]}'")
                sizes[key] = v
        args = []
        for i, (name, ctype, role, use, shape) in enumerate(self.params):
            if role in ("count", "width", "height") and name not in sizes:
                if name in kwargs:
                    sizes[name] = self._scalar(name, ctype, kwargs[name])
                elif main_shape is not None:
                    h, w = main_shape[0], main_shape[1]
                    sizes[name] = w if role == "width" else h if role == "height" else w * h * 4
                else:
                    raise TypeError(f"{self.name}: missing keyword argument '{name}'")
        buffers = {}
        for i, (name, ctype, role, use, shape) in enumerate(self.params):
            if role in ("count", "width", "height"):
                args.append(sizes[name])
            elif shape and shape[0] in ("picture", "samples"):
                if i not in arrays:
                    if len(shape[3]) == 2:
                        w, h = sizes[shape[3][0]], sizes[shape[3][1]]
                    else:
                        count = sizes[shape[3][0]]
                        h, w = (main_shape[0], main_shape[1]) if main_shape is not None else (1, max(0, (count - 1) // 4 + 1))
                    if w < 1 or h < 1 or w * h * 4 > 2**31 - 1:
                        raise ValueError(f"{self.name}: '{name}' would be {w}x{h}")
                    arrays[i] = np.zeros((h, w, shape[1]), dtype=_DTYPES[_base(ctype)])
                args.append(arrays[i].ctypes.data)
            elif shape:  # fixed outputs, reserved pointers
                buffers[i] = np.zeros(shape[1], dtype=_DTYPES[_base(ctype)])
                args.append(buffers[i].ctypes.data)
            elif role == "path":
                if name not in kwargs:
                    raise TypeError(f"{self.name}: missing keyword argument '{name}' (a file name)")
                args.append(os.fsencode(kwargs[name]))
            else:
                if name in kwargs:
                    args.append(self._scalar(name, ctype, kwargs[name]))
                elif role in ("reserved", "channel"):
                    args.append(0 if role == "reserved" else 1)
                else:
                    raise TypeError(f"{self.name}: missing keyword argument '{name}' ({ctype})")
        result = self._c_function()(*args)
        if self.output is not None:
            out = arrays[self.output]
            if self.size == "turned":  # turned in place: the same elements, height x width
                out = out.reshape(out.shape[1], out.shape[0], out.shape[2])
            return out
        outputs = {self.params[i][0]: (b if b.size > 1 else b[0].item()) for i, b in buffers.items()
                   if self.params[i][3] == "out"}
        if outputs:
            outputs["result"] = result
            return outputs
        return result

    def _scalar(self, name, ctype, value):
        _, lo, hi = _SCALARS[ctype]
        if lo is None:
            try:
                return float(value)
            except (TypeError, ValueError):
                raise ValueError(f"{self.name}: '{name}' must be a number, got {value!r}") from None
        if isinstance(value, bool) or not isinstance(value, (int, getattr(_np, "integer", int))):
            raise ValueError(f"{self.name}: '{name}' must be an integer, got {value!r}")
        if not lo <= int(value) <= hi:
            raise ValueError(f"{self.name}: '{name}' = {value} is out of range for {ctype} ({lo}..{hi})")
        return int(value)


class _Family:
    """The members of a family, chosen by the dtype of the positional picture."""

    def __init__(self, name, members):
        self.__name__ = name
        self.members = members  # layout -> _Export
        first = next(iter(members.values()))
        self.__doc__ = (f"{name}(picture, ...): {', '.join(m.name for m in members.values())} by the picture's "
                        f"dtype (uint8, uint16, float32).\n\n" + first.__doc__)

    def __call__(self, *pictures, **kwargs):
        np = _numpy()
        if not pictures or not isinstance(pictures[0], np.ndarray):
            raise ValueError(f"{self.__name__}: the first argument must be a numpy picture")
        layout = _LAYOUT_OF_DTYPE.get(str(pictures[0].dtype))
        if layout not in self.members:
            have = ", ".join(str(np.dtype(_DTYPES[f"Pixel{l}"])) for l in sorted(self.members))
            raise ValueError(f"{self.__name__}: no member for {pictures[0].dtype} pictures (it takes {have})")
        return self.members[layout](*pictures, **kwargs)


def exports():
    """The names callable here, in the order of the headers."""
    return [n for n, e in EXPORTS.items() if not _not_callable(e[6]) and n in globals()]


def _build():
    platform = "posix" if os.name != "nt" else "windows"
    families = {}
    for name, entry in EXPORTS.items():
        if _not_callable(entry[6]) or (entry[1] == "posix" and platform != "posix"):
            continue
        f = _Export(name, entry)
        globals()[name] = f
        __all__.append(name)
        if f.family and len(f.layouts) == 1:
            families.setdefault(f.family, {})[f.layouts[0]] = f
    for family, members in families.items():
        if family not in globals() and len(members) > 1:
            globals()[family] = _Family(family, members)
            __all__.append(family)


_build()
