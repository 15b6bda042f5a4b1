"""Small meshes with smooth or flat normals, in metres, Z up."""

import math


class Mesh:
    """Vertices with normals, and triangles in groups, one group per material."""

    def __init__(self):
        self.positions = []
        self.normals = []
        self.groups = {}

    def vertex(self, position, normal):
        length = math.sqrt(sum(n * n for n in normal)) or 1.0
        self.positions.append(tuple(position))
        self.normals.append(tuple(n / length for n in normal))
        return len(self.positions) - 1

    def triangle(self, material, a, b, c):
        """Turns the triangle so that its front agrees with its vertices' normals."""
        pa, pb, pc = (self.positions[i] for i in (a, b, c))
        u = [pb[i] - pa[i] for i in range(3)]
        v = [pc[i] - pa[i] for i in range(3)]
        front = (u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0])
        if not any(abs(x) > 1e-12 for x in front):
            return
        normal = [sum(self.normals[k][i] for k in (a, b, c)) for i in range(3)]
        turned = sum(front[i] * normal[i] for i in range(3)) < 0
        self.groups.setdefault(material, []).append((a, c, b) if turned else (a, b, c))

    def quad(self, material, a, b, c, d):
        self.triangle(material, a, b, c)
        self.triangle(material, a, c, d)


def box(mesh, material, half, centre=(0, 0, 0), bevel=0.0):
    """A box whose edges are rounded by `bevel`: each corner has one vertex per face, and the faces are joined."""
    corner = {}
    signs = [(x, y, z) for x in (-1, 1) for y in (-1, 1) for z in (-1, 1)]
    for s in signs:
        for axis in range(3):
            position = [centre[i] + s[i] * (half[i] - (0 if i == axis else bevel)) for i in range(3)]
            normal = [s[axis] if i == axis else 0 for i in range(3)]
            corner[s, axis] = mesh.vertex(position, normal)

    def flipped(s, *axes):
        return tuple(-s[i] if i in axes else s[i] for i in range(3))

    for axis in range(3):
        u, v = [i for i in range(3) if i != axis]
        for s in signs:
            if s[u] > 0 and s[v] > 0:
                mesh.quad(material, corner[s, axis], corner[flipped(s, u), axis],
                          corner[flipped(s, u, v), axis], corner[flipped(s, v), axis])
            if bevel and s[axis] > 0:
                other = flipped(s, axis)
                mesh.quad(material, corner[s, u], corner[other, u], corner[other, v], corner[s, v])
    if bevel:
        for s in signs:
            mesh.triangle(material, corner[s, 0], corner[s, 1], corner[s, 2])


def lathe(mesh, material, profile, sides, axis="z", centre=(0, 0, 0)):
    """Turns a profile of (radius, height) about an axis; its segments meet at edges. Going up, it faces outward."""
    def place(radius, height, angle):
        x, y = radius * math.cos(angle), radius * math.sin(angle)
        point = (x, y, height) if axis == "z" else (x, height, -y)
        return point

    for (r0, h0), (r1, h1) in zip(profile, profile[1:]):
        outward = (h1 - h0, r0 - r1)
        rows = []
        for radius, height in ((r0, h0), (r1, h1)):
            row = []
            for i in range(sides + 1):
                angle = 2 * math.pi * i / sides
                position = place(radius, height, angle)
                row.append(mesh.vertex([position[k] + centre[k] for k in range(3)],
                                       place(outward[0], outward[1], angle)))
            rows.append(row)
        for i in range(sides):
            mesh.quad(material, rows[0][i], rows[0][i + 1], rows[1][i + 1], rows[1][i])


def sphere(mesh, materials, radius, sides=24, rings=12):
    """A ball in sectors of alternating materials, so that one sees it turn."""
    def vertex(i, j):
        up, around = math.pi * j / rings, 2 * math.pi * i / sides
        n = (math.sin(up) * math.cos(around), math.sin(up) * math.sin(around), math.cos(up))
        return mesh.vertex([radius * x for x in n], n)

    grid = [[vertex(i, j) for j in range(rings + 1)] for i in range(sides + 1)]
    for i in range(sides):
        material = materials[(i * 2 * len(materials) // sides) % len(materials)]
        for j in range(rings):
            mesh.quad(material, grid[i][j], grid[i + 1][j], grid[i + 1][j + 1], grid[i][j + 1])


def beam(mesh, material, start, end, thickness):
    """A bar of square section from one point to another."""
    along = [b - a for a, b in zip(start, end)]
    length = math.sqrt(sum(x * x for x in along))
    along = [x / length for x in along]
    aside = (0, 0, 1) if abs(along[2]) < 0.9 else (1, 0, 0)

    def cross(a, b):
        return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]

    u = cross(aside, along)
    u = [x / math.sqrt(sum(y * y for y in u)) for x in u]
    axes = [u, cross(along, u), along]
    half = (thickness / 2, thickness / 2, length / 2)
    middle = [(a + b) / 2 for a, b in zip(start, end)]
    bar = Mesh()
    box(bar, material, half)
    offset = len(mesh.positions)

    def turned(v):
        return tuple(sum(v[k] * axes[k][i] for k in range(3)) for i in range(3))

    mesh.positions += [tuple(m + x for m, x in zip(middle, turned(p))) for p in bar.positions]
    mesh.normals += [turned(n) for n in bar.normals]
    mesh.groups.setdefault(material, []).extend(
        tuple(i + offset for i in triangle) for triangle in bar.groups[material])


def link(mesh, material, length, width, wire, flat="x", around=20, sides=8):
    """A link of a chain along Z, in the plane of Z and the axis `flat`; the sizes are those of its middle line."""
    straight = length / 2 - width / 2
    rows = []
    for i in range(around + 1):
        angle = 2 * math.pi * i / around
        c, s = math.cos(angle), math.sin(angle)
        centre = (width / 2 * c, width / 2 * s + math.copysign(straight, s if i not in (0, around) else 1))
        row = []
        for k in range(sides + 1):
            turn = 2 * math.pi * k / sides
            out, aside = wire * math.cos(turn), wire * math.sin(turn)
            x, y, z = centre[0] + out * c, aside, centre[1] + out * s
            n = (math.cos(turn) * c, math.sin(turn), math.cos(turn) * s)
            row.append(mesh.vertex((x, y, z), n) if flat == "x" else mesh.vertex((y, x, z), (n[1], n[0], n[2])))
        rows.append(row)
    for first, second in zip(rows, rows[1:]):
        for k in range(sides):
            mesh.quad(material, first[k], second[k], second[k + 1], first[k + 1])
