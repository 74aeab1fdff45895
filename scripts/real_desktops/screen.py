"""Finds changes on the screen by comparing two pictures in squares of a few pixels."""

SQUARE = 4


class Picture:
    def __init__(self, display):
        self.width = display.screen.width_in_pixels
        self.height = display.screen.height_in_pixels
        self.rows = [row for row in self._rows(display.pixels())]

    def _rows(self, data):
        stride = self.width * 4
        return [data[top:top + stride] for top in range(0, len(data), stride)]

    def changes(self, earlier, area=None):
        """The squares that differ from those of an earlier picture, as (column, row)."""
        left, top, width, height = area or (0, 0, self.width, self.height)
        squares = set()
        for y in range(top, min(top + height, self.height)):
            mine, its = self.rows[y], earlier.rows[y]
            if mine == its:
                continue
            for x in range(left - left % SQUARE, min(left + width, self.width), SQUARE):
                if mine[x * 4:(x + SQUARE) * 4] != its[x * 4:(x + SQUARE) * 4]:
                    squares.add((x // SQUARE, y // SQUARE))
        return squares

    def is_drawn(self):
        """Whether the picture shows more than plain areas."""
        return len({row[at:at + 4] for row in self.rows for at in range(0, len(row), 16)}) > 50

    def brightness(self, area):
        """The mean of an area's pixels, from 0 to 1."""
        left, top, width, height = area
        total = count = 0
        for y in range(top, top + height):
            row = self.rows[y][left * 4:(left + width) * 4]
            for channel in range(3):
                total += sum(row[channel::4])
            count += 3 * width
        return total / count / 255

    def contrast(self, area):
        """The difference between an area's brightest and darkest pixels, from 0 to 1."""
        left, top, width, height = area
        tones = [sum(row[at:at + 3]) for row in self.rows[top:top + height]
                 for at in range(left * 4, (left + width) * 4, 4)]
        return (max(tones) - min(tones)) / 765


def changed_areas(squares, gap=2):
    """The groups of neighbouring squares, as areas in pixels, the largest first."""
    left = set(squares)
    found = []
    while left:
        group, edge = [], [left.pop()]
        while edge:
            column, row = edge.pop()
            group.append((column, row))
            near = [(column + across, row + down) for across in range(-gap, gap + 1)
                    for down in range(-gap, gap + 1)]
            for square in near:
                if square in left:
                    left.remove(square)
                    edge.append(square)
        found.append(bounds(group))
    return sorted(found, key=lambda area: area[2] * area[3], reverse=True)


def bounds(group):
    columns, rows = zip(*group)
    return (min(columns) * SQUARE, min(rows) * SQUARE,
            (max(columns) - min(columns) + 1) * SQUARE, (max(rows) - min(rows) + 1) * SQUARE)
