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
