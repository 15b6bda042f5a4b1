"""Makes models/chain.dae and chain.xml: a wrecking ball on a chain, drawn aside, before a wall of bricks."""

import math
import pathlib
import random

import chains
from agents import FIXED, MOVABLE, PLAYABLE, write
from collada import Document
from meshes import Mesh, beam, box, lathe, sphere

LINKS, ASIDE = 12, 62  # how many, and degrees from hanging straight down
HEIGHT, LEG = 7.2, 2.6  # of the gantry, and half of how far its legs are apart
BALL, BALL_MASS = 0.6, 350
BRICK, BRICK_MASS = (0.15, 0.3, 0.15), 25  # half extents
COURSES, COLUMNS, WALL_X = 9, 7, 1.5
STONES = ["sandstone", "limestone", "terracotta", "ochre"]


def bricks():
    """Name, place and half width of each brick, in running bond with half bricks at the ends."""
    for course in range(COURSES):
        z = BRICK[2] * (2 * course + 1)
        if course % 2 == 0:
            row = [((i - (COLUMNS - 1) / 2) * 2 * BRICK[1], "brick") for i in range(COLUMNS)]
        else:
            row = [((i - (COLUMNS - 2) / 2) * 2 * BRICK[1], "brick") for i in range(COLUMNS - 1)]
            end = (COLUMNS - 0.5) * BRICK[1]
            row = [(-end, "half_brick"), *row, (end, "half_brick")]
        for i, (y, kind) in enumerate(row):
            yield f"brick_{course + 1}_{i + 1}", (WALL_X, y, z), kind


def gantry_mesh():
    mesh = Mesh()
    box(mesh, "steel", (0.15, LEG + 0.35, 0.18), (0, 0, HEIGHT + 0.18), bevel=0.02)
    for side in (-1, 1):
        for x in (-1.6, 1.6):
            beam(mesh, "steel", (x, side * LEG * 1.1, 0), (0, side * LEG, HEIGHT + 0.1), 0.2)
            box(mesh, "concrete", (0.35, 0.35, 0.12), (x, side * LEG * 1.1, 0.12), bevel=0.03)
        beam(mesh, "steel", (-0.75, side * LEG * 1.05, HEIGHT * 0.53), (0.75, side * LEG * 1.05, HEIGHT * 0.53), 0.12)
    lathe(mesh, "signal", [(0, -0.1), (0.16, -0.1), (0.16, 0.02), (0, 0.02)], 20, centre=(0, 0, HEIGHT))
    return mesh


def model():
    document = Document("chain", "Made by scenes/generator/chain.py.")
    document.material("sandstone", (0.82, 0.66, 0.45))
    document.material("limestone", (0.87, 0.79, 0.66))
    document.material("terracotta", (0.74, 0.40, 0.27))
    document.material("ochre", (0.78, 0.56, 0.30))
    document.material("concrete", (0.62, 0.62, 0.60), specular=0)
    document.material("gravel", (0.50, 0.47, 0.40), specular=0)
    document.material("steel", (0.20, 0.33, 0.45), shininess=50, specular=0.5)
    document.material("iron", (0.17, 0.18, 0.20), shininess=80, specular=0.8)
    document.material("signal", (0.93, 0.43, 0.10), shininess=60, specular=0.5)

    document.physics_material("stone", 0.7, 0.05)
    document.physics_material("metal", 0.4, 0.1)
    half_brick = (BRICK[0], BRICK[1] / 2, BRICK[2])
    for name, half, mass in (("brick", BRICK, BRICK_MASS), ("half_brick", half_brick, BRICK_MASS / 2)):
        mesh = Mesh()
        box(mesh, "stone", half, bevel=0.02)
        document.geometry(name, mesh)
        document.rigid_body(name, [f"<box><half_extents>{half[0]} {half[1]} {half[2]}</half_extents></box>"], "stone",
                            mass=mass)
    ball, ground = Mesh(), Mesh()
    sphere(ball, ["iron", "signal"], BALL)
    lathe(ball, "iron", [(0, BALL - 0.03), (0.14, BALL - 0.03), (0.1, BALL + 0.12), (0, BALL + 0.12)], 16)
    box(ground, "gravel", (60, 60, 0.25))
    for name, mesh in (("ball", ball), ("ground", ground), ("gantry", gantry_mesh())):
        document.geometry(name, mesh)
    document.rigid_body("ball", [f"<sphere><radius>{BALL}</radius></sphere>"], "metal", mass=BALL_MASS)
    document.rigid_body("ground", ["<box><half_extents>60 60 0.25</half_extents></box>"], "stone")
    legs = [f"<translate>{x} {side * LEG * 1.05:g} {HEIGHT / 4}</translate><box><half_extents>0.2 0.2 {HEIGHT / 4}"
            f"</half_extents></box>" for x in (-1.3, 1.3) for side in (-1, 1)]
    document.rigid_body("gantry", legs, "metal")
    document.node("ground", "ground", (0, 0, -0.25))
    document.instance("ground", "ground")
    document.node("gantry", "gantry")
    document.instance("gantry", "gantry")

    angle = math.radians(ASIDE)
    direction = (-math.sin(angle), 0, -math.cos(angle))
    chains.declare(document, "iron")
    links, end = chains.hang(document, "link", LINKS, "gantry", (0, 0, HEIGHT), (0, 0, HEIGHT), direction, ASIDE)
    document.node("ball", "ball", [e + (BALL + 0.1) * d for e, d in zip(end, direction)], rotate=(0, 1, 0, ASIDE))
    document.instance("ball", "ball")
    chains.join(document, "ball_joint", f"#{links[-1]}", (0, 0, -chains.PITCH / 2), "ball", (0, 0, BALL + 0.1))

    stones = random.Random(11)
    for name, place, kind in bricks():
        document.node(name, kind, place, bind={"stone": stones.choice(STONES)})
        document.instance(kind, name)
    return document, links


if __name__ == "__main__":
    scenes = pathlib.Path(__file__).resolve().parent.parent
    document, links = model()
    document.write(scenes / "models" / "chain.dae")
    agents = {"ground": FIXED, "gantry": FIXED, **dict.fromkeys(links, PLAYABLE), "ball": MOVABLE}
    agents.update({name: MOVABLE for name, _, _ in bricks()})
    write(scenes / "chain.xml", "A wrecking ball on a chain. Made by scenes/generator/chain.py.", "models/chain.dae",
          agents)
