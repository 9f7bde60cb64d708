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


def evening(films, minutes):
    """As many of the best films as one evening has time for."""
    chosen = []
    for film in sorted(films, key=lambda film: -film.rating):
        if film.minutes <= minutes:
            chosen.append(film)
            minutes -= film.minutes
    return chosen


def listing(films):
    """One line a film."""
    return "\n".join(f"{film.title} ({film.minutes} min)" for film in films)


print(listing(evening(CATALOGUE, 240)))

