"""Travel times of the direct P and S in the IASP91 Earth model.

The model is the set of velocity polynomials published by B. L. N. Kennett and
E. R. Engdahl, "Traveltimes for global earthquake location and phase
identification", Geophys. J. Int. 105 (1991), 429-465.  Times come from ray theory
in a spherical Earth: the mantle and crust are cut into thin shells, in each of
which velocity follows v = a * r**b (so that both integrals have a closed form),
and the first of all direct rays that reach a distance is the answer.

No corrections for ellipticity, station elevation or local structure.
"""

import math

EARTH_RADIUS_KM = 6371.0
CORE_RADIUS_KM = 3482.0
SHELL_KM = 10.0
RAYS = 500

# (top radius, bottom radius, P polynomial, S polynomial) in x = r / 6371 km, km/s.
IASP91 = [
    (6371.0, 6351.0, (5.80,), (3.36,)),
    (6351.0, 6336.0, (6.50,), (3.75,)),
    (6336.0, 6251.0, (8.78541, -0.74953), (6.706231, -2.248585)),
    (6251.0, 6161.0, (25.41389, -17.69722), (5.75020, -1.27420)),
    (6161.0, 5961.0, (30.78765, -23.25415), (15.24213, -11.08552)),
    (5961.0, 5711.0, (29.38896, -21.40656), (17.70732, -13.50652)),
    (5711.0, 5611.0, (25.96984, -16.93412), (20.76890, -16.53147)),
    (5611.0, 3631.0, (25.1486, -41.1538, 51.9932, -26.6083),
     (12.9303, -21.2590, 27.8988, -14.1080)),
    (3631.0, 3482.0, (14.49470, -1.47089), (8.16616, -1.58206)),
]

# Times of this model for a source 55 km deep at 67 degrees, and 100 km deep at 45
# degrees, as other programs that carry the model print them: (depth km, degrees,
# phase, seconds).
PUBLISHED_TIMES = [
    (55.0, 67.0, "P", 647.04),
    (55.0, 67.0, "S", 1176.95),
    (100.0, 45.0, "P", 485.21),
]


def _velocity(coefficients, radius):
    x = radius / EARTH_RADIUS_KM
    return sum(c * x**power for power, c in enumerate(coefficients))


class _Shell:
    """One shell: slowness eta = r / v at its top and bottom, and its exponent."""

    def __init__(self, top, bottom, coefficients):
        v_top, v_bottom = _velocity(coefficients, top), _velocity(coefficients, bottom)
        self.top, self.bottom = top, bottom
        self.eta_top, self.eta_bottom = top / v_top, bottom / v_bottom
        self.one_minus_b = 1.0 - math.log(v_top / v_bottom) / math.log(top / bottom)

    def crossing(self, p):
        """(angle in radians, seconds) of one passage, and whether the ray turned."""
        turned = p >= self.eta_bottom
        bottom_angle = 0.0 if turned else math.acos(p / self.eta_bottom)
        bottom_leg = 0.0 if turned else math.sqrt(self.eta_bottom**2 - p * p)
        angle = (math.acos(p / self.eta_top) - bottom_angle) / self.one_minus_b
        time = (math.sqrt(self.eta_top**2 - p * p) - bottom_leg) / self.one_minus_b
        return angle, time, turned


def _shells(wave, source_radius):
    column = 2 if wave == "P" else 3
    shells = []
    for layer in IASP91:
        edges = [layer[0], layer[1]]
        if layer[1] < source_radius < layer[0]:
            edges.insert(1, source_radius)
        for top, bottom in zip(edges, edges[1:]):
            count = max(1, math.ceil((top - bottom) / SHELL_KM))
            step = (top - bottom) / count
            shells += [_Shell(top - i * step, top - (i + 1) * step, layer[column])
                       for i in range(count)]
    return shells


class DirectWave:
    """Times of the direct wave `wave` ("P" or "S") from one source depth in km."""

    def __init__(self, wave, depth_km):
        source_radius = EARTH_RADIUS_KM - max(0.0, depth_km)
        shells = _shells(wave, source_radius)
        self._above = [s for s in shells if s.bottom >= source_radius - 1e-6]
        self._below = [s for s in shells if s.top <= source_radius + 1e-6]
        # No ray can leave the source, or pass a slower shell on the way, with more.
        self._p_max = min([self._below[0].eta_top]
                          + [min(s.eta_top, s.eta_bottom) for s in self._above])
        self._p_core = self._below[-1].eta_bottom
        self._rays = self._sample()

    def _turning_ray(self, p):
        """(distance in degrees, seconds) of the ray that goes down and turns."""
        angle = time = 0.0
        for shell in self._above:
            a, t, _ = shell.crossing(p)
            angle, time = angle + a, time + t
        for shell in self._below:
            if p >= shell.eta_top:
                # Total reflection off the top of a faster shell: a ray too.
                break
            a, t, turned = shell.crossing(p)
            angle, time = angle + 2 * a, time + 2 * t
            if turned:
                break
        return math.degrees(angle), time

    def _sample(self):
        low, high = self._p_core * (1 + 1e-9), self._p_max * (1 - 1e-9)
        step = (high - low) / RAYS
        ps = {low + i * step for i in range(RAYS + 1)}
        # A branch ends where a ray grazes a discontinuity; sample close to each end.
        for shell in self._below:
            for eta in (shell.eta_top, shell.eta_bottom):
                ps |= {p for p in (eta * (1 - 1e-7), eta * (1 + 1e-7)) if low < p < high}
        return [(p, *self._turning_ray(p)) for p in sorted(ps)]

    def seconds(self, degrees):
        """Travel time of the first turning ray at `degrees`, None where there is none."""
        times = [self._refine(first, second, degrees)
                 for first, second in zip(self._rays, self._rays[1:])
                 if min(first[1], second[1]) <= degrees <= max(first[1], second[1])]
        return min(times, default=None)

    def _refine(self, first, second, degrees):
        """Time at `degrees` between two rays (p, distance, time) on either side of it."""
        for _ in range(60):
            if abs(first[1] - second[1]) < 1e-3 or second[0] - first[0] < 1e-9:
                break
            p = (first[0] + second[0]) / 2
            middle = (p, *self._turning_ray(p))
            if (first[1] <= degrees) == (middle[1] <= degrees):
                first = middle
            else:
                second = middle
        # The slope of the travel-time curve is the ray parameter.
        return first[2] + first[0] * math.radians(degrees - first[1])
