from dataclasses import dataclass


@dataclass
class Film:
    title: str
    minutes: int
    rating: float


CATALOGUE = [
    Film("The Lighthouse Keeper", 104, 8.1),
    Film("Paper Boats", 92, 7.6),
    Film("Northern Line", 127, 8.4),
]


def tonight(films, limit):
    """The best film that ends before bedtime."""
    short = [film for film in films if film.minutes <= limit]
    return max(short, key=lambda film: film.rating)

