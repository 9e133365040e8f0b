"""The Python binding on each layout: exact results against calling the
export directly through ctypes, the filled-in arguments, and its errors.
Needs the library (EFFECTS_LIBRARY, or a build in the clone)."""
import ctypes
import os
import subprocess
import sys
import unittest

import numpy as np

import effects

RNG = np.random.default_rng(7)


def picture(dtype, h=3, w=5):
    if dtype == np.uint8:
        return RNG.integers(0, 256, (h, w, 4), dtype=np.uint8)
    if dtype == np.uint16:
        return RNG.integers(0, 32768, (h, w, 4), dtype=np.uint16)
    return RNG.uniform(-0.25, 1.75, (h, w, 4)).astype(np.float32)


def direct(name, argtypes, *args):
    """Calls the export through ctypes with every argument spelled out."""
    f = getattr(effects.library(), name)
    f.argtypes = argtypes
    f.restype = ctypes.c_int32
    return f(*args)


P, I, U, F = ctypes.c_void_p, ctypes.c_int32, ctypes.c_uint32, ctypes.c_float


class Layouts(unittest.TestCase):
    def test_each_layout_equals_the_direct_call(self):
        for dtype, suffix in ((np.uint8, "32"), (np.uint16, "64"), (np.float32, "128")):
            with self.subTest(layout=suffix):
                src = picture(dtype)
                kept = src.copy()
                got = getattr(effects, "VexoGamma" + suffix)(src, gamma=2.2)
                want = src.copy()
                direct("VexoGamma" + suffix, [U, U, P, F], 5, 3, want.ctypes.data, 2.2)
                self.assertEqual(got.tobytes(), want.tobytes())
                self.assertEqual(src.tobytes(), kept.tobytes(), "the argument is not changed")
                # The family name picks the member from the dtype.
                self.assertEqual(effects.VexoGamma(src, gamma=2.2).tobytes(), want.tobytes())

                got = getattr(effects, "VexoInvert" + suffix)(src)  # channel defaults to all
                want = src.copy()
                direct("VexoInvert" + suffix, [I, P, I], src.size, want.ctypes.data, 1)
                self.assertEqual(got.tobytes(), want.tobytes())

    def test_second_pictures_targets_and_measurements(self):
        canvas, layer = picture(np.uint16, 4, 6), picture(np.uint16, 2, 3)
        got = effects.Vexo64DirectDIB(layer, canvas=canvas, x=2, y=1, opacity=60, mode=4)
        want = canvas.copy()
        r = direct("Vexo64DirectDIB", [I, I, I, I, P, P, I, I, I, I], 2, 1, 3, 2, layer.ctypes.data,
                   want.ctypes.data, 6, 4, 60, 4)
        self.assertEqual(r, 1)
        self.assertEqual(got.tobytes(), want.tobytes())

        region = effects.Vexo128BitBltDIB(picture(np.float32, 4, 6), x=1, y=1, width=2, height=3)
        self.assertEqual(region.shape, (3, 2, 4))
        rgb = effects.Convert32BIT_4to3ChannelsFast(canvas.astype(np.uint8))
        self.assertEqual(rgb.shape, (4, 6, 3))
        self.assertEqual(rgb[..., 0].tobytes(), canvas.astype(np.uint8)[..., 2].tobytes())

        stats = effects.Histogram32Fast(np.full((2, 2, 4), 9, dtype=np.uint8))
        self.assertEqual((stats["minimum"], stats["maximum"], stats["result"]), (9.0, 9.0, 16))
        self.assertEqual(stats["histogram"].shape, (256,))
        self.assertEqual(effects.Blending(a=0x10203, b=0x30201), 0x10201)

    def test_files_written_by_an_export(self):
        path = os.path.join(os.environ.get("TMPDIR", "/tmp"), f"effects-binding-{os.getpid()}.vxl")
        try:
            pic = picture(np.uint8, 1, 1)
            self.assertEqual(effects.VexoSaveVXLFile32(pic, fileName=path, info1=3, info2=70000), 0)
            with open(path, "rb") as f:
                data = f.read()
            self.assertEqual(data[:8], bytes([0xB8, 7, 0xE8, 3, 3, 0, 0x70, 0x11]))
            self.assertEqual(data[16:], pic.tobytes())
        finally:
            if os.path.exists(path):
                os.remove(path)


class Errors(unittest.TestCase):
    def test_bad_arrays_and_values_raise_before_c(self):
        pic = picture(np.uint8)
        cases = [
            (lambda: effects.VexoGamma32(pic.astype(np.float64), gamma=1), "must be a uint8 array"),
            (lambda: effects.VexoGamma32(pic[:, :, :3], gamma=1), "shape (height, width, 4)"),
            (lambda: effects.VexoGamma32(pic[:0], gamma=1), "has no pixels"),
            (lambda: effects.VexoGamma32([[1, 2, 3, 4]], gamma=1), "must be a numpy array"),
            (lambda: effects.VexoGamma(pic.astype(np.int32), gamma=1), "no member for int32"),
            (lambda: effects.VexoNewPicture32(pic, red=256, green=0, blue=0, mask=0), "out of range for uint8_t"),
            (lambda: effects.VexoGamma32(pic, gamma="x"), "must be a number"),
            (lambda: effects.Vexo32DirectDIB(pic, canvas=pic.astype(np.uint16), x=0, y=0, opacity=1, mode=0),
             "'canvas' must be a uint8 array"),
        ]
        for call, message in cases:
            with self.subTest(message=message):
                with self.assertRaises(ValueError) as caught:
                    call()
                self.assertIn(message, str(caught.exception))

    def test_missing_and_unknown_arguments(self):
        pic = picture(np.uint8)
        for call, message in [
            (lambda: effects.VexoGamma32(pic), "missing keyword argument 'gamma'"),
            (lambda: effects.VexoGamma32(pic, gama=2), "has no parameter 'gama'"),
            (lambda: effects.VexoGamma32(pic, gamma=2, width=3), "comes from the array"),
            (lambda: effects.Vexo32DirectDIB(x=0, y=0, opacity=1, mode=0), "needs its picture 'source'"),
        ]:
            with self.subTest(message=message):
                with self.assertRaises(TypeError) as caught:
                    call()
                self.assertIn(message, str(caught.exception))

    def test_device_exports_are_not_offered(self):
        self.assertFalse(hasattr(effects, "Vexo32AdvancedDIB"))
        self.assertIn("VexoGamma32", effects.exports())

    def test_the_library_path_comes_from_the_environment(self):
        env = dict(os.environ, EFFECTS_LIBRARY="/nonexistent/libEffects.so")
        code = "import effects, numpy\ntry:\n effects.VexoInvertMask32(numpy.zeros((1,1,4),'uint8'))\n" \
               "except effects.LibraryNotFound as e: print(e)"
        out = subprocess.run([sys.executable, "-c", code], env=env, capture_output=True, text=True, check=True).stdout
        self.assertIn("/nonexistent/libEffects.so", out)


if __name__ == "__main__":
    unittest.main()
