#pragma once

namespace tavaro {

class MendedText;

/// "Pasaword; x", "AWSSECRETACCESSKEY=x", "Bearer9{Q2…": labels of secrets, and what joins them to their values.
void mendLabels(MendedText& text);

}
