// Stands where guidance would when nothing can be hidden on this system.
import orvo.settings

InformationCard {
    card: View.unsupportedCard
}
