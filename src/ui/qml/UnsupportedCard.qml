import orvo.settings

InformationCard {
    card: View.unsupportedCard
}
