"""Helpers for the tests of `zarn-shadow check`."""


from command_support import COLUMNS, CommandTest, HEADER, line

TYPES = ("Scint/InnerAV->AV->Water", "AV->Scint/InnerAV->AV->Water", "AV->Water",
         "Water->AV->Scint/InnerAV->AV->Water", "Water->AV->Water", "Water",
         "Water->Reflection->Water", "Light Path Uninitialised")
WRONG_TYPE = "Cannot calculate shadowing for this light light path type: "


# --- Paths -------------------------------------------------------------------

def path(type_name, **vectors):
    """One row: path("AV->Water", av1=(0, 0, 5860)); the other cells are empty."""
    cells = {"type": type_name}
    for vector, coordinates in vectors.items():
        for axis, value in zip("xyz", coordinates):
            cells[f"{vector}_{axis}"] = value if isinstance(value, str) else repr(value)
    return line([cells.get(column, "") for column in COLUMNS])


def row_with(column, text):
    """A row of raw text, in which one cell is exactly @p text."""
    return ",".join(text if name == column else "Water" if name == "type" else ""
                    for name in COLUMNS)


def table(*rows, end="\n"):
    return "".join(row + end for row in (HEADER, *rows))


NEAR_ANCHOR = path("AV->Water", av1=(0.0, 0.0, -5800.0))
FAR_FROM_ANCHOR = path("AV->Water", av1=(0.0, 0.0, 5860.0))


class CheckTest(CommandTest):
    def paths(self, *rows, name="paths.csv"):
        return self.write(name, table(*rows))

    def check_text(self, text, *options, **more):
        return self.check(self.write("paths.csv", text), *options, **more)

    def verdicts(self, entries, rows, *options):
        return self.check(self.paths(*rows), *options,
                          geometry=self.tables(*entries)).verdicts()

    def refuse(self, text, *wanted, options=(), **more):
        """Bad input: status 2, a message with the file's name and all of @p wanted, and
        an existing output unchanged."""
        paths = self.write("paths.csv", text)
        old = self.write("old.csv", "as it was")
        result = self.check(paths, "-o", old, *options, status=2, **more)
        self.assertEqual(old.read_bytes(), b"as it was")
        self.assertFalse((self.folder / "old.csv.json").exists())
        for part in ("paths.csv", *wanted):
            self.assertRegex(result.err, part)
        self.assertNotIn("paths/second", result.err)
        return result
