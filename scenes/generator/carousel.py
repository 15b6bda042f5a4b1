"""Makes models/carousel.dae: the parts of a teacup ride, without physics. carousel.xml puts them together."""

import math
import pathlib

from collada import Document
from meshes import Mesh, box, lathe

CUPS = {"1": ("mint", "rose", "sky"), "2": ("lemon", "mint", "coral"), "3": ("sky", "lemon", "rose")}


def canopy():
    """A tent of alternating stripes with a hem."""
    mesh, sides, rows = Mesh(), 16, [(0.0, 1.1), (3.6, 0.0), (3.6, -0.35)]
    for i in range(sides):
        material = ("cream", "rose")[i % 2]
        a, b = (2 * math.pi * k / sides for k in (i, i + 1))
        for (r0, h0), (r1, h1) in zip(rows, rows[1:]):
            for facing in (1, -1):
                corners = []
                for r, h, angle in ((r0, h0, a), (r1, h1, a), (r1, h1, b), (r0, h0, b)):
                    slope = (h0 - h1, r1 - r0)
                    normal = (slope[0] * math.cos((a + b) / 2), slope[0] * math.sin((a + b) / 2), slope[1])
                    corners.append(mesh.vertex((r * math.cos(angle), r * math.sin(angle), h),
                                               [facing * n for n in normal]))
                mesh.quad(material, *corners)
    lathe(mesh, "gold", [(0, 1.0), (0.1, 1.05), (0.14, 1.2), (0.1, 1.34), (0, 1.4)], 20)
    return mesh


def cup():
    """A cup with a lip, a bench inside and a handle."""
    mesh = Mesh()
    lathe(mesh, "glaze", [(0, 0.05), (0.3, 0.05), (0.36, 0.14), (0.52, 0.36), (0.6, 0.62), (0.63, 0.64), (0.63, 0.68),
                          (0.58, 0.68), (0.48, 0.4), (0.3, 0.3), (0, 0.3)], 32)
    lathe(mesh, "gold", [(0, 0.3), (0.05, 0.3), (0.05, 0.62), (0.2, 0.64), (0.2, 0.68), (0, 0.69)], 24)
    steps = 10
    for i in range(steps):
        angle = math.pi * (i + 0.5) / steps - math.pi / 2
        box(mesh, "glaze", (0.035, 0.045, 0.035),
            (0.54 + 0.24 * math.cos(angle), 0, 0.4 + 0.17 * math.sin(angle)), bevel=0.012)
    return mesh


def model():
    document = Document("carousel", "Made by scenes/generator/carousel.py.")
    document.material("cream", (0.96, 0.91, 0.80))
    document.material("rose", (0.86, 0.33, 0.42), shininess=60, specular=0.4)
    document.material("coral", (0.95, 0.50, 0.38), shininess=60, specular=0.4)
    document.material("mint", (0.45, 0.78, 0.66), shininess=60, specular=0.4)
    document.material("sky", (0.38, 0.62, 0.86), shininess=60, specular=0.4)
    document.material("lemon", (0.95, 0.82, 0.38), shininess=60, specular=0.4)
    document.material("gold", (0.80, 0.62, 0.25), shininess=90, specular=0.8)
    document.material("boards", (0.62, 0.45, 0.30))
    document.material("lawn", (0.50, 0.62, 0.40), specular=0)
    document.material("slate", (0.40, 0.44, 0.50), specular=0.1)

    ground, base, platform, turntable = Mesh(), Mesh(), Mesh(), Mesh()
    lathe(ground, "lawn", [(40, -0.05), (0, -0.05)], 48)
    lathe(base, "slate", [(4.4, 0), (4.4, 0.12), (4.0, 0.12), (4.0, 0.24), (0, 0.24)], 64)
    lathe(base, "gold", [(0.16, 0.24), (0.16, 3.3)], 24)
    lathe(platform, "boards", [(3.6, 0), (3.6, 0.1), (0.3, 0.1)], 64)
    lathe(platform, "gold", [(3.62, 0.02), (3.65, 0.05), (3.62, 0.08)], 64)
    lathe(turntable, "cream", [(1.35, 0), (1.35, 0.06), (0, 0.06)], 48)
    lathe(turntable, "rose", [(0.28, 0.06), (0.24, 0.4), (0, 0.46)], 24)
    for name, mesh in (("ground", ground), ("base", base), ("platform", platform), ("turntable", turntable), ("cup", cup()),
                       ("canopy", canopy())):
        document.geometry(name, mesh)

    for name in ("ground", "base", "platform", "canopy"):
        document.node(name, name)
    for table, glazes in CUPS.items():
        document.node(f"turntable_{table}", "turntable")
        for i, glaze in enumerate(glazes):
            document.node(f"cup_{table}_{i + 1}", "cup", bind={"glaze": glaze})
    return document


if __name__ == "__main__":
    model().write(pathlib.Path(__file__).resolve().parent.parent / "models" / "carousel.dae")
