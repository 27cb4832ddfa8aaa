"""What somebody meant who wrote a word that nobody knows."""

LETTERS_FOR_EACH_MISTAKE = 3
LONGEST_WORD = 200  # what is longer is no misspelt word, and costs its length times all others'


def distance_between(one, other):
    """The optimal string alignment distance."""
    before, last = [], list(range(len(other) + 1))
    for i, letter in enumerate(one, 1):
        row = [i]
        for j, wanted in enumerate(other, 1):
            row.append(min(last[j] + 1, row[j - 1] + 1, last[j - 1] + (letter != wanted)))
            if i > 1 and j > 1 and letter == other[j - 2] and one[i - 2] == wanted:
                row[j] = min(row[j], before[j - 2] + 1)
        before, last = last, row
    return last[-1]


def suggestion(word, known):
    """As the switch's programs make it: "; did you mean '--root'?" with the known word that differs least, by letters
    that are missing, wrong, too many or swapped. Empty where all differ in more than a third of the word."""
    if len(word) > LONGEST_WORD:
        return ''
    most = max(1, len(word) // LETTERS_FOR_EACH_MISTAKE)
    distances = [(distance_between(word, candidate), candidate) for candidate in known]
    distance, nearest = min(distances, key=lambda pair: pair[0], default=(0, ''))
    return f"; did you mean '{nearest}'?" if 0 < distance <= most else ''
