package com.quenda.skiff.trellis.server;

/**
 * A symbol that shows an object found by a search, with what a list of hits needs: its label and
 * type, the submap it lives on and the object's selection name ("" when the object has none).
 */
public record FoundSymbol(String symbolLabel, String submapName, String objectSelectionName,
        int objectId, int symbolId, int submapId, String symbolType, int symbolStatus) {

    /** What a search looks at; the ordinal is the code the request carries. */
    public enum Category { OBJECTNAME, HOSTNAME, IPADDRESS }

    /**
     * How the query text is matched: as it stands; as a wildcard pattern, where '*' is any run of
     * characters and the whole text must match; or as a regular expression that may match
     * anywhere. The ordinal is the code the request carries.
     */
    public enum MatchType { MATCH_EXACTLY, MATCH_WILDCARD, MATCH_REGEXP }
}
