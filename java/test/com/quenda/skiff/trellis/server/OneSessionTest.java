package com.quenda.skiff.trellis.server;

import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.api.BeforeAll;

/**
 * A test class that runs on one started session for all its tests: the session is started
 * before the first test and ended, with the emulator's end of session, after the last.
 */
abstract class OneSessionTest {
    protected static TestSession session;
    protected static RecordingDispatcher dispatcher;
    protected static QxwInterface client;
    protected static EmulatorControl control;

    @BeforeAll
    static void startSession() throws Exception {
        session = TestSession.started();
        dispatcher = session.dispatcher;
        client = session.client;
        control = new EmulatorControl();
    }

    @AfterAll
    static void endSession() throws Exception {
        session.end(control);
        control.close();
    }
}
