"""scripts/gen-exports on a sample header set: roles, shapes, file uses,
families, help text, and the generated files."""
import os
import runpy
import types
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
# The generator is a script without a .py suffix: run it as a module namespace.
gen = types.SimpleNamespace(**runpy.run_path(os.path.join(ROOT, "scripts", "gen-exports"), run_name="gen_exports"))

TABLE = {e["name"]: e for e in gen.parse(os.path.join(os.path.dirname(os.path.abspath(__file__)), "sample"))}


def param(export, name):
    return next(p for p in TABLE[export]["params"] if p["name"] == name)


class Generator(unittest.TestCase):
    def test_roles_shapes_and_uses(self):
        cases = [
            ("SampleInvert32", "elementCount", "count", None),
            ("SampleInvert32", "pixels", "pixels", ("picture", "out", ["elementCount"])),
            ("SampleInvert32", "channel", "channel", None),
            ("Sample32Place", "source", "pixels", ("picture", "in", ["width", "height"])),
            ("Sample32Place", "canvas", "pixels", ("picture", "out", ["canvasWidth", "canvasHeight"])),
            ("Sample32Place", "canvasWidth", "width", None),
            ("Sample32Place", "reserved", "reserved", None),
            ("SampleRows_64", "rgb48", "buffer", ("samples", "out", ["width", "height"])),
            ("SampleRows_64", "histogram", "buffer", ("fixed", "out", [])),
            ("SampleRows_64", "scratch", "buffer", ("samples", "scratch", ["width", "height"])),
            ("SampleRows_64", "mystery", "buffer", ("unknown", "out", [])),
            ("SampleDraw", "hdc", "device", None),
            ("SampleDraw", "hbmTarget", "bitmap", None),
        ]
        for export, name, role, shape in cases:
            with self.subTest(export=export, param=name):
                p = param(export, name)
                self.assertEqual(p["role"], role)
                got = p.get("shape")
                self.assertEqual((got["kind"], got["use"], got["size"]) if got else None, shape)
        self.assertEqual(param("SampleSave", "fileName")["use"], "out")
        self.assertEqual(param("SampleRows_64", "rgb48")["shape"]["elements"], 3)

    def test_export_facts(self):
        self.assertEqual([TABLE[n]["size"] for n in ("SampleInvert32", "Sample32Place", "SampleRows_64", "SampleDraw")],
                         ["count", "picture", "wrapped", "none"])
        self.assertEqual(TABLE["SampleInvert128"]["family"], "SampleInvert")
        self.assertEqual(TABLE["Sample32Place"]["family"], "", "a family needs two members")
        self.assertEqual(gen.family_of("Sample32Place", ["32"]), "SamplePlace")
        self.assertEqual(gen.family_of("VexoRotate90_64", ["64"]), "VexoRotate90")
        self.assertEqual(gen.family_of("VexoDigitalDisplay3128", ["128"]), "VexoDigitalDisplay3")
        self.assertEqual(gen.family_of("Convert32to64Fast", ["32", "64"]), "")
        self.assertEqual(TABLE["SampleInvert128"]["help"], "Inverts; channel picks the elements.")
        self.assertEqual(TABLE["SampleSave"]["help"], "Layer onto canvas.")
        self.assertEqual(TABLE["SampleSeed"]["platforms"], "posix")

    def test_generated_files(self):
        table = list(TABLE.values())
        self.assertNotIn("SampleSeed", gen.def_file(table))
        cpp = gen.cpp_table(table)
        self.assertIn('{"canvas", Type::Pixel32Ptr, Role::Pixels, false, {Kind::Picture, Use::Out, Order::Bgra, 4, 4, 5}}',
                      cpp)
        self.assertIn("#if !defined(_WIN32)", cpp)
        namespace = {}
        exec(gen.python_table(table), namespace)
        entry = namespace["EXPORTS"]["SampleRows_64"]
        self.assertEqual(entry[:5], ("int32_t", "all", "", (64,), "wrapped"))
        self.assertIn(("rgb48", "uint16_t*", "buffer", "out", ("samples", 3, "rgb", ("width", "height"))), entry[6])

    def test_the_checked_in_files_are_current(self):
        stale = [path for path, text in gen.outputs(gen.parse()).items()
                 if open(os.path.join(ROOT, path)).read() != text]
        self.assertEqual(stale, [])


if __name__ == "__main__":
    unittest.main()
